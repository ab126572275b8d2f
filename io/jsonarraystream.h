#pragma once

#include "jsonrecordfinder.h"
#include "nestedrecords.h"
#include "progress.h"

#include <memory>
#include <string>

class TextSource;

/// Reads a large array without ever holding more of its text than a few elements: memory that is
/// touched for the first time costs more than the parsing. Anything but a sound array of records in
/// clean UTF-8 is left to the reader of whole texts, which knows what to say.
class JsonArrayStream
{
public:
    enum class End { Read, Stopped, NotPossible };

    /// The source must outlive this object.
    JsonArrayStream(TextSource *source, std::unique_ptr<NestedRecords> records,
                    const Progress &progress);

    End read();
    /// What was read, when it is all that the text holds.
    NestedRecords *records() { return m_records.get(); }

private:
    bool fill();
    bool skipSpace();
    End readElement();

    TextSource *m_source;
    std::unique_ptr<NestedRecords> m_records;
    RecordFinder m_finder;
    std::string m_window;
    size_t m_at = 0;
    size_t m_filled = 0;
    /// Where the window starts in the text.
    qint64 m_start = 0;
    bool m_atEnd = false;
};
