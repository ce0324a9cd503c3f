#include "DaemonRun.h"

#include "Box.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <sched.h>
#include <sys/stat.h>

namespace orvo::test
{

namespace
{

constexpr int kBoundMs = 20000;

std::vector<std::string> commandFor(const std::vector<std::string>& arguments,
                                    DaemonRun::OnSigterm onSigterm, const std::string& program)
{
    requireBox();
    std::string line = "exec ";
    if (onSigterm == DaemonRun::OnSigterm::Quits)
    {
        line += "env LD_PRELOAD=" QUIT_ON_SIGTERM
                " ASAN_OPTIONS=\"$ASAN_OPTIONS:verify_asan_link_order=0\" ";
    }
    line += R"("$0" "$@" >/tmp/daemon-out 2>/tmp/daemon-err)";
    std::vector<std::string> command{"sh", "-c", line, program};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

} // namespace

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

DaemonRun::DaemonRun(const std::vector<std::string>& arguments, OnSigterm onSigterm,
                     const std::string& program)
    : m_process(commandFor(arguments, onSigterm, program))
{
}

int DaemonRun::waitForEnd()
{
    return m_process.waitForEnd(kBoundMs) ? m_process.exitStatus() : -1;
}

std::string DaemonRun::out()
{
    return contentOf("/tmp/daemon-out");
}

std::string DaemonRun::err()
{
    return contentOf("/tmp/daemon-err");
}

std::map<pid_t, std::pair<int, int>> DaemonRun::policies() const
{
    std::map<pid_t, std::pair<int, int>> policies;
    const std::string tasks = "/proc/" + std::to_string(m_process.pid()) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks))
    {
        const pid_t thread = std::stoi(task.path().filename());
        sched_param parameter{};
        sched_getparam(thread, &parameter);
        policies[thread] = {sched_getscheduler(thread), parameter.sched_priority};
    }
    return policies;
}

bool DaemonRun::isWatchdogOpen() const
{
    struct stat node = {};
    stat("/dev/watchdog", &node);
    const std::string descriptors = "/proc/" + std::to_string(m_process.pid()) + "/fd";
    for (const auto& descriptor : std::filesystem::directory_iterator(descriptors))
    {
        struct stat open = {};
        if (stat(descriptor.path().c_str(), &open) == 0 && open.st_dev == node.st_dev &&
            open.st_ino == node.st_ino)
        {
            return true;
        }
    }
    return false;
}

long DaemonRun::lockedKb() const
{
    std::istringstream status(contentOf("/proc/" + std::to_string(m_process.pid()) + "/status"));
    for (std::string word; status >> word;)
    {
        long value = 0;
        if (word == "VmLck:" && status >> value)
        {
            return value;
        }
    }
    return -1;
}

} // namespace orvo::test
