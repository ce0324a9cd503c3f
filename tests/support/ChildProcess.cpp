#include "ChildProcess.h"

#include "Eventually.h"

#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvo::test
{

namespace
{
constexpr int kCannotExecute = 127;
constexpr int kSignalBase = 128;
constexpr mode_t kOutputMode = 0644;
} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::string& outputFile)
{
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
    {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);

    m_pid = fork();
    if (m_pid == 0)
    {
        // A test that is killed must not leave servers behind.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (!outputFile.empty())
        {
            const int output = open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kOutputMode);
            dup2(output, STDOUT_FILENO);
            dup2(output, STDERR_FILENO);
        }
        execvp(words[0], words.data());
        _exit(kCannotExecute);
    }
}

ChildProcess::~ChildProcess()
{
    kill();
}

bool ChildProcess::isRunning()
{
    if (m_pid == -1)
    {
        return false;
    }
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) == m_pid)
    {
        reap(status);
        return false;
    }
    return true;
}

void ChildProcess::signal(int number) const
{
    if (m_pid != -1)
    {
        ::kill(m_pid, number);
    }
}

bool ChildProcess::waitForEnd(int boundMs)
{
    return eventually([this] { return !isRunning(); }, boundMs);
}

void ChildProcess::kill()
{
    if (m_pid == -1)
    {
        return;
    }
    ::kill(m_pid, SIGKILL);
    int status = 0;
    if (waitpid(m_pid, &status, 0) == m_pid)
    {
        reap(status);
    }
}

void ChildProcess::reap(int status)
{
    m_exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
    m_pid = -1;
}

} // namespace orvo::test
