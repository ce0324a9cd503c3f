#pragma once

#include <QString>
#include <QStringList>

namespace orvo
{

/// How a child process of the supervisor ended, and what it wrote.
///
/// Shape:   out and err are the texts up to their first zero byte, read as UTF-8.
struct ProcessOutcome
{
    enum class End
    {
        NotStarted, ///< the program is missing or cannot be executed, or no process could be made
        Crashed,    ///< ended by a signal
        Exited      ///< ended by itself with exitCode
    };

    End end{End::NotStarted};
    int exitCode{-1}; ///< meaningful for Exited only
    QString out;
    QString err;

    [[nodiscard]] bool succeeded() const { return end == End::Exited && exitCode == 0; }
};

/// Runs program (looked up in PATH) with arguments and waits for its end without a time-out: an
/// init script may take as long as its service needs. A process that the program leaves behind in
/// the background does not prolong the wait.
///
/// Threads: blocks the caller, and so the event loop, until the program has ended.
[[nodiscard]] ProcessOutcome runProcess(const QString& program, const QStringList& arguments);

} // namespace orvo
