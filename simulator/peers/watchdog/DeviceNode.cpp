#include "watchdog/DeviceNode.h"

#include "common/Diagnostics.h"

#include <array>
#include <cstring>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr std::size_t kEventBuffer = 4096;
}

DeviceNode::DeviceNode(const std::string& path)
    : m_path(path), m_watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (inotify_add_watch(m_watch.get(), path.c_str(), IN_OPEN | IN_MODIFY | IN_CLOSE) == -1)
    {
        complain("cannot watch the device " + path + ": " + errnoText() +
                 "; create it as a plain file, or the program runs without a watchdog");
        m_watch.reset();
    }
}

std::vector<DeviceNode::Event> DeviceNode::takeEvents()
{
    std::vector<Event> events;
    std::array<char, kEventBuffer> buffer{};
    ssize_t count = 0;
    while (m_watch.isOpen() && (count = read(m_watch.get(), buffer.data(), buffer.size())) > 0)
    {
        const auto length = static_cast<std::size_t>(count);
        for (std::size_t offset = 0; offset + sizeof(inotify_event) <= length;)
        {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            offset += sizeof event + event.len;
            if ((event.mask & IN_OPEN) != 0)
            {
                events.push_back(Event::Opened);
            }
            else if ((event.mask & IN_MODIFY) != 0)
            {
                events.push_back(Event::Written);
            }
            else if ((event.mask & IN_CLOSE) != 0)
            {
                events.push_back(Event::Closed);
            }
        }
    }
    return events;
}

bool DeviceNode::isOpenedAs(pid_t process, int number) const
{
    const std::string entry = "/proc/" + std::to_string(process) + "/fd/" + std::to_string(number);
    struct stat used = {};
    struct stat ours = {};
    return stat(entry.c_str(), &used) == 0 && stat(m_path.c_str(), &ours) == 0 &&
           used.st_dev == ours.st_dev && used.st_ino == ours.st_ino;
}

} // namespace orvo::simulator
