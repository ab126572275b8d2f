#include "scriptprocess.h"

#include "memoryceiling.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int interval = 50; // milliseconds
constexpr size_t blockSize = size_t(1) << 16;

/// Collects records and writes them to the pipe in blocks, or when some time has passed.
class RecordPipe
{
public:
    explicit RecordPipe(int file)
        : m_file(file)
    {
    }

    void add(const ScriptRecord &record)
    {
        record.appendTo(&m_bytes);
        if (m_bytes.size() >= blockSize ||
            Clock::now() - m_written >= std::chrono::milliseconds(interval)) {
            flush();
        }
    }
    void flush()
    {
        size_t at = 0;
        while (at < m_bytes.size()) {
            const ssize_t written = write(m_file, m_bytes.data() + at, m_bytes.size() - at);
            if (written < 0 && errno != EINTR) {
                _exit(1); // nobody reads
            }
            at += written > 0 ? size_t(written) : 0;
        }
        m_bytes.clear();
        m_written = Clock::now();
    }

private:
    int m_file;
    std::string m_bytes;
    Clock::time_point m_written = Clock::now();
};

/// The other process; ended at the latest by the destructor.
class Child
{
public:
    Child(pid_t process, int file)
        : m_process(process)
        , m_file(file)
    {
    }
    ~Child()
    {
        kill(m_process, SIGKILL);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
        }
        close(m_file);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    pid_t process() const { return m_process; }
    int file() const { return m_file; }

private:
    pid_t m_process;
    int m_file;
};

[[noreturn]] void workAsChild(int file, pid_t parent,
                              const std::function<void(const ScriptProcess::Tell &)> &work)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(1);
    }
    // An interrupt from the keyboard reaches both processes; the parent decides.
    signal(SIGINT, SIG_IGN);
    signal(SIGTERM, SIG_DFL);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    RecordPipe pipe(file);
    try {
        work([&pipe](const ScriptRecord &record) { pipe.add(record); });
    } catch (...) {
        _exit(1);
    }
    pipe.flush();
    // Nothing of the parent's is cleaned up here.
    _exit(0);
}

/// Reads what is there; false at the end.
bool readMore(int file, std::string *bytes)
{
    std::array<char, blockSize> block;
    const ssize_t size = read(file, block.data(), block.size());
    if (size > 0) {
        bytes->append(block.data(), size_t(size));
    }
    return size > 0 || (size < 0 && (errno == EINTR || errno == EAGAIN));
}

ScriptProcess::End listen(const Child &child, const std::function<void(const ScriptRecord &)> &told,
                          const std::function<bool()> &goOn, int timeoutSeconds)
{
    std::string bytes;
    ScriptRecord record;
    Clock::time_point lastTold = Clock::now();
    Clock::time_point lastLook = lastTold;
    for (;;) {
        pollfd waiting{child.file(), POLLIN, 0};
        const bool isReady = poll(&waiting, 1, interval) > 0;
        const Clock::time_point now = Clock::now();
        if (isReady) {
            lastTold = now;
            if (!readMore(child.file(), &bytes)) {
                return ScriptProcess::End::Crashed;
            }
            std::string_view rest = bytes;
            while (record.takeFrom(&rest)) {
                if (record.kind == ScriptRecord::Kind::End) {
                    return ScriptProcess::End::Done;
                }
                told(record);
            }
            bytes.erase(0, bytes.size() - rest.size());
        }
        if (now - lastTold >= std::chrono::seconds(timeoutSeconds)) {
            return ScriptProcess::End::Timeout;
        }
        if (now - lastLook < std::chrono::milliseconds(interval)) {
            continue;
        }
        lastLook = now;
        if (!goOn()) {
            return ScriptProcess::End::Stopped;
        }
        // It shares the tables with this process, so its own figure holds them.
        if (MemoryCeiling::memoryOfProcessGb(child.process()) > MemoryCeiling::limitGb()) {
            return ScriptProcess::End::Memory;
        }
    }
}

} // namespace

ScriptProcess::End ScriptProcess::run(const std::function<void(const Tell &)> &work,
                                      const std::function<void(const ScriptRecord &)> &told,
                                      const std::function<bool()> &goOn, int timeoutSeconds)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return End::NotStarted;
    }
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
        close(ends[0]);
        workAsChild(ends[1], parent, work);
    }
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        return End::NotStarted;
    }
    const Child child(process, ends[0]);
    return listen(child, told, goOn, timeoutSeconds);
}
