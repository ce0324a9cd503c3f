#pragma once

#include "ChildProcess.h"
#include "Files.h"

#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

namespace orvo::test
{

/// A run of watchdog-guard over a plain file of its own.
///
/// Owns:    its folder and the guard's process.
/// Threads: one at a time.
class GuardRun
{
public:
    /// Starts the guard over a program; prefix is a command that runs the guard, if any.
    void start(int timeoutMs, const std::vector<std::string>& program,
               const std::vector<std::string>& prefix = {});

    /// Starts it over tests' watchdog-user, which does these words.
    void startUser(int timeoutMs, const std::vector<std::string>& words,
                   const std::vector<std::string>& prefix = {});

    /// The guard's exit status, waited for at most 10 s; -1 when it does not end.
    int status();

    [[nodiscard]] std::string device() const { return path("watchdog"); }
    [[nodiscard]] std::string path(const std::string& name) const;
    [[nodiscard]] ChildProcess& guard() { return *m_guard; }

    /// The journal without its times, and the times.
    [[nodiscard]] std::vector<std::string> journal() const { return journalOf(path("journal")); }
    [[nodiscard]] std::vector<double> times() const { return timesOf(path("journal")); }
    /// Waits until the journal holds the line.
    [[nodiscard]] bool notes(const std::string& line) const;
    /// The time of the first journal line that reads so, in seconds.
    [[nodiscard]] double timeOf(const std::string& line) const;

    /// What guard and program wrote, line by line.
    [[nodiscard]] std::vector<std::string> output() const { return linesOf(path("output")); }
    /// The number that the program said after this word; waits until it has.
    [[nodiscard]] long said(const std::string& word) const;

    /// Whether the process is there, alive or as a zombie.
    static bool exists(long pid);

private:
    QTemporaryDir m_folder;
    std::unique_ptr<ChildProcess> m_guard;
};

} // namespace orvo::test
