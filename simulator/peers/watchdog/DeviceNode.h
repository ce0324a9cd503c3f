#pragma once

#include "common/Descriptor.h"

#include <string>
#include <vector>

#include <sys/types.h>

namespace orvo::simulator
{

/// The watchdog node of the simulated device: a plain file, watched for who uses it.
///
/// Owns:    the inotify descriptor.
/// Threads: one at a time.
/// Errors:  a missing node (a device whose watchdog driver failed) is complained about on standard
///          error and never does anything.
class DeviceNode
{
public:
    enum class Event
    {
        Opened,
        Written,
        Closed
    };

    explicit DeviceNode(const std::string& path);

    /// Readable when events wait; -1 for a missing node.
    [[nodiscard]] int descriptor() const { return m_watch.get(); }

    /// What happened to the node since the last call, oldest first. The kernel merges writes that
    /// follow each other directly.
    std::vector<Event> takeEvents();

    /// Whether this file descriptor of a process or thread is the node, by whatever path it was
    /// opened.
    [[nodiscard]] bool isOpenedAs(pid_t process, int number) const;

private:
    std::string m_path;
    Descriptor m_watch;
};

} // namespace orvo::simulator
