#pragma once

#include "scriptrecord.h"

#include <functional>
#include <string>

/// Runs a script in a process of its own, a copy of this one, so that it shares the tables and
/// cannot harm the program: endless loops, exhausted memory or stack end that process alone.
class ScriptProcess
{
public:
    enum class End {
        Done,
        Timeout, ///< nothing was told for too long
        Memory,  ///< more memory than the ceiling allows
        Stopped, ///< asked by `goOn`
        Crashed, ///< the process ended before its work
        NotStarted
    };
    /// Tells a record to the parent; for the work that runs in the other process.
    using Tell = std::function<void(const ScriptRecord &record)>;

    /// `work` runs in the other process, which then ends. `told` gets its records; `goOn` is asked
    /// every 50 ms or so. Both may throw.
    static End run(const std::function<void(const Tell &tell)> &work,
                   const std::function<void(const ScriptRecord &record)> &told,
                   const std::function<bool()> &goOn, int timeoutSeconds);
};
