#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace orvo::test
{

/// A real process that a test started and that ends with the test.
///
/// Owns:    the process; the destructor kills it (SIGKILL) if it still runs, and reaps it.
/// Threads: one at a time.
/// Errors:  a program that cannot be executed exits with 127, as a shell would say.
class ChildProcess
{
public:
    /// Starts command[0] (looked up in PATH) with the rest as arguments; standard output and
    /// standard error go to outputFile when one is named (created, truncated), else they are
    /// shared.
    explicit ChildProcess(const std::vector<std::string>& command,
                          const std::string& outputFile = std::string());
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// -1 once it was reaped.
    [[nodiscard]] pid_t pid() const { return m_pid; }
    [[nodiscard]] bool isRunning();

    void signal(int number) const;

    /// Waits until the process ends, at most boundMs; true when it ended. Its exit status (128 +
    /// number when a signal ended it) is exitStatus() from then on.
    bool waitForEnd(int boundMs);
    [[nodiscard]] int exitStatus() const { return m_exitStatus; }

    /// SIGKILL, then reap; nothing happens when it has ended already.
    void kill();

private:
    void reap(int status);

    pid_t m_pid{-1};
    int m_exitStatus{-1};
};

} // namespace orvo::test
