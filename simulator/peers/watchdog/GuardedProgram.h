#pragma once

#include "common/Descriptor.h"

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace orvo::simulator
{

/// The program under the guard, with everything it starts.
///
/// Owns:    its processes: orphans become children of this process, which reaps them, so that no
///          zombie stays in the device's process list. They may outlive this object; the program
///          itself is killed by the kernel when this process ends.
/// Threads: a process with one thread.
class GuardedProgram
{
public:
    explicit GuardedProgram(const std::vector<std::string>& command) : m_command(command) {}

    /// Starts the program under the watchdog filter, with the signal mask and dispositions this
    /// process had before. From now on SIGCHLD is readable on childEvents() and the signals that
    /// end a whole process group (INT, TERM, HUP, QUIT) do nothing here: they are for the program.
    /// @return the filter's listener; a closed descriptor after a complaint on standard error.
    Descriptor start();

    /// Readable when a process below us may have ended.
    [[nodiscard]] const Descriptor& childEvents() const { return m_childEvents; }

    /// Collects the processes that have ended.
    void reap();

    /// Of the program itself, once it has ended: its exit status, or 128 + the number of the signal
    /// that ended it. A program that could not be executed: 127 when it is missing, else 126.
    [[nodiscard]] std::optional<int> exitStatus() const { return m_exitStatus; }

    /// SIGKILL to the program and all its descendants; returns when none is left.
    void killAll();

private:
    [[noreturn]] void runChild(int channel) const;
    void collect(pid_t process, int status);

    std::vector<std::string> m_command;
    pid_t m_pid{-1};
    Descriptor m_childEvents;
    std::optional<int> m_exitStatus;
};

} // namespace orvo::simulator
