#include "watchdog/GuardedProgram.h"

#include "common/Diagnostics.h"
#include "common/SignalDescriptor.h"
#include "watchdog/DescriptorChannel.h"
#include "watchdog/IoctlFilter.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr int kNotFound = 127;
constexpr int kNotExecutable = 126;
constexpr int kSignalBase = 128;

pid_t parentOf(const std::filesystem::path& process)
{
    std::ifstream status(process / "status");
    for (std::string word; status >> word;)
    {
        pid_t parent = -1;
        if (word == "PPid:" && status >> parent)
        {
            return parent;
        }
    }
    return -1;
}

std::vector<pid_t> childrenOf(pid_t parent)
{
    std::vector<pid_t> children;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored))
    {
        const std::string name = entry.path().filename();
        const bool isProcess = name.find_first_not_of("0123456789") == std::string::npos;
        if (isProcess && parentOf(entry.path()) == parent)
        {
            children.push_back(static_cast<pid_t>(std::stol(name)));
        }
    }
    return children;
}
} // namespace

Descriptor GuardedProgram::start()
{
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
    {
        complain("cannot start the program: " + errnoText());
        return Descriptor();
    }
    const Descriptor ours(ends[0]);
    Descriptor theirs(ends[1]);
    prctl(PR_SET_CHILD_SUBREAPER, 1);

    // Blocked from before the fork on: a program may end, or its group be signalled, at once.
    sigset_t programMask;
    pthread_sigmask(SIG_BLOCK, nullptr, &programMask);
    m_childEvents = openSignalDescriptor({SIGCHLD, SIGINT, SIGTERM, SIGHUP, SIGQUIT});
    m_pid = fork();
    if (m_pid == 0)
    {
        pthread_sigmask(SIG_SETMASK, &programMask, nullptr);
        runChild(theirs.get());
    }
    theirs.reset();
    Descriptor listener = receiveDescriptor(ours.get());
    if (m_pid == -1 || !m_childEvents.isOpen())
    {
        complain("cannot start the program: " + errnoText());
        return Descriptor();
    }
    return listener;
}

void GuardedProgram::runChild(int channel) const
{
    // A program without its watchdog hardware is no device.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const Descriptor listener = enterWatchdogIoctlFilter(watchdogIoctlFilter());
    if (!listener.isOpen() || !sendDescriptor(channel, listener))
    {
        complain("cannot intercept the watchdog's ioctls: " + errnoText() +
                 "; Linux 5.5 with seccomp user notification is needed, without another listener");
        _exit(kNotExecutable);
    }
    std::vector<char*> words;
    for (const std::string& word : m_command)
    {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    execvp(words[0], words.data());
    const int status = errno == ENOENT ? kNotFound : kNotExecutable;
    complain("cannot run " + m_command[0] + ": " + errnoText() +
             "; give the path of an executable file");
    _exit(status);
}

void GuardedProgram::reap()
{
    takeSignals(m_childEvents);
    int status = 0;
    for (pid_t process = 0; (process = waitpid(-1, &status, WNOHANG)) > 0;)
    {
        collect(process, status);
    }
}

void GuardedProgram::killAll()
{
    // Each round reaches one generation: what the killed ones leave behind become our children.
    int status = 0;
    for (std::vector<pid_t> children; !(children = childrenOf(getpid())).empty();)
    {
        for (const pid_t child : children)
        {
            kill(child, SIGKILL);
        }
        collect(waitpid(-1, &status, 0), status);
    }
}

void GuardedProgram::collect(pid_t process, int status)
{
    if (process == m_pid)
    {
        m_exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
    }
}

} // namespace orvo::simulator
