#include "GuardRun.h"

#include "Eventually.h"

#include <algorithm>
#include <csignal>
#include <fstream>

namespace orvo::test
{

namespace
{
constexpr int kEndBoundMs = 10000;
}

void GuardRun::start(int timeoutMs, const std::vector<std::string>& program,
                     const std::vector<std::string>& prefix)
{
    std::ofstream create(device(), std::ios::app);
    std::vector<std::string> command = prefix;
    for (const std::string& word :
         {peer("watchdog-guard"), std::string("--device"), device(), std::string("--timeout-ms"),
          std::to_string(timeoutMs), std::string("--journal"), path("journal"), std::string("--")})
    {
        command.push_back(word);
    }
    command.insert(command.end(), program.begin(), program.end());
    m_guard = std::make_unique<ChildProcess>(command, path("output"));
}

void GuardRun::startUser(int timeoutMs, const std::vector<std::string>& words,
                         const std::vector<std::string>& prefix)
{
    std::vector<std::string> program = {peer("watchdog-user")};
    program.insert(program.end(), words.begin(), words.end());
    start(timeoutMs, program, prefix);
}

int GuardRun::status()
{
    return m_guard->waitForEnd(kEndBoundMs) ? m_guard->exitStatus() : -1;
}

std::string GuardRun::path(const std::string& name) const
{
    return m_folder.filePath(QString::fromStdString(name)).toStdString();
}

bool GuardRun::notes(const std::string& line) const
{
    return eventually(
        [&]
        {
            const std::vector<std::string> lines = journal();
            return std::find(lines.begin(), lines.end(), line) != lines.end();
        });
}

double GuardRun::timeOf(const std::string& line) const
{
    const std::vector<std::string> lines = journal();
    const auto found = std::find(lines.begin(), lines.end(), line);
    return found == lines.end() ? -1 : times()[static_cast<std::size_t>(found - lines.begin())];
}

long GuardRun::said(const std::string& word) const
{
    long number = -1;
    (void)eventually(
        [&]
        {
            for (const std::string& line : output())
            {
                if (line.rfind(word + " ", 0) == 0)
                {
                    number = std::stol(line.substr(word.size() + 1));
                    return true;
                }
            }
            return false;
        });
    return number;
}

bool GuardRun::exists(long pid)
{
    return kill(static_cast<pid_t>(pid), 0) == 0;
}

} // namespace orvo::test
