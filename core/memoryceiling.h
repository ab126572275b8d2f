#pragma once

#include <QtGlobal>
#include <exception>
#include <functional>

/// The process used more memory than the user allows, and nobody raised the limit. The only thrown
/// failure of the program: it unwinds out of the run and ends the program.
class MaxMemoryException : public std::exception
{
public:
    MaxMemoryException(double limitGb, double usedGb)
        : m_limitGb(limitGb)
        , m_usedGb(usedGb)
    {
    }

    const char *what() const noexcept override { return "memory ceiling exceeded"; }
    /// Both in units of 2^30 bytes.
    double limitGb() const { return m_limitGb; }
    double usedGb() const { return m_usedGb; }

private:
    double m_limitGb;
    double m_usedGb;
};

/// The process's private memory (anonymous pages in memory and in swap) against the user's limit.
namespace MemoryCeiling {

/// Units of 2^30 bytes. Read from the kernel at most every 100 ms.
double memoryInUseGb();
/// The same, read now.
double memoryInUseNowGb();
/// That of another process of the user, read now; 0 stands for this one.
double memoryOfProcessGb(qint64 processId);

/// 80 % of the machine's memory, in units of 2^30 bytes.
double defaultLimitGb();
double limitGb();
void setLimitGb(double gb);

/// Called before the limit counts as exceeded, to give unused memory back to the system.
void setReclaim(std::function<void()> reclaim);

/// True when the memory in use is greater than the limit, also after unused memory was given back.
bool isExceeded();

/// Makes memoryInUse answer this figure; negative: the real one again. For tests.
void pretendInUseGb(double gb);

} // namespace MemoryCeiling
