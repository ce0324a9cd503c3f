#pragma once

#include "ChildProcess.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvo::test
{

/// One run of the real supervisor binary; it ends with its owner at the latest.
///
/// Meant for programs that run in a box: the daemon uses the device's fixed paths.
class DaemonRun
{
public:
    /// What becomes of the daemon when it gets SIGTERM: without a hand it dies of it, with one its
    /// event loop is told to quit, which nothing on the device ever does.
    enum class OnSigterm
    {
        Dies,
        Quits
    };

    explicit DaemonRun(const std::vector<std::string>& arguments = {},
                       OnSigterm onSigterm = OnSigterm::Dies,
                       const std::string& program = WARDEX_PROGRAM);

    /// Waits for the end; its exit status, 128 + the signal's number, or -1 when it still runs.
    int waitForEnd();

    [[nodiscard]] ChildProcess& process() { return m_process; }
    [[nodiscard]] static std::string out();
    [[nodiscard]] static std::string err();

    /// Scheduling policy and priority of each of its threads by thread id.
    [[nodiscard]] std::map<pid_t, std::pair<int, int>> policies() const;
    [[nodiscard]] bool isWatchdogOpen() const;
    [[nodiscard]] long lockedKb() const;

private:
    ChildProcess m_process;
};

/// The content of a file; empty when there is none.
[[nodiscard]] std::string contentOf(const std::string& path);

} // namespace orvo::test
