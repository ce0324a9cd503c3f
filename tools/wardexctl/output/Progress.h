#pragma once

#include <string>

namespace orvo::ctl
{

/// Tells a person that something takes its time: a line on standard error that counts the seconds
/// on a terminal, and is said once anywhere else.
///
/// Threads: one.
class Progress
{
public:
    /// what: "waiting for pictor's script".
    explicit Progress(std::string what);
    /// Takes the line off the terminal.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// To be called each second.
    void show(int seconds);

private:
    std::string m_what;
    bool m_isTerminal;
    bool m_isShown{false};
};

} // namespace orvo::ctl
