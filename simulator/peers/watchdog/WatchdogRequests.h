#pragma once

#include "common/Descriptor.h"

#include <cstdint>
#include <vector>

struct seccomp_notif;
struct seccomp_notif_resp;

namespace orvo::simulator
{

class DeviceNode;

/// Answers the ioctls of a watchdog driver in place of the kernel, which sees only a plain file.
///
/// Owns/borrows: owns the listener of the filter; borrows the node, which must live longer.
/// Units:   the time-out is answered in whole seconds, at least 1, as the driver interface has it.
/// Threads: one at a time; the asking thread waits until it is answered.
/// Errors:  a bad pointer is answered with EFAULT. Memory that the kernel does not let us write is
///          answered with EIO and complained about on standard error.
class WatchdogRequests
{
public:
    enum class Request
    {
        /// Nobody waits any more, or somebody used the request on another file.
        NotOurs,
        GetTimeout,
        KeepAlive
    };

    WatchdogRequests(Descriptor listener, const DeviceNode* node, int timeoutMs);

    /// Readable when somebody asks; hangs up when the last process under the filter has ended.
    [[nodiscard]] int descriptor() const { return m_listener.get(); }

    /// Reads the request that waits. Call only when descriptor() is readable.
    Request receive();

    /// Lets the asking thread go on; to be called after receive() with what it answered.
    /// Hardware that is not there any more answers ENODEV.
    void answer(Request request, bool isRemoved);

private:
    [[nodiscard]] int writeTimeout(const seccomp_notif& notification) const;
    [[nodiscard]] bool stillWaits(std::uint64_t id) const;

    Descriptor m_listener;
    const DeviceNode* m_node;
    int m_timeoutSeconds;
    // Sized by what the running kernel writes, which may be more than its headers here know.
    std::vector<std::uint64_t> m_notification;
    std::vector<std::uint64_t> m_response;
};

} // namespace orvo::simulator
