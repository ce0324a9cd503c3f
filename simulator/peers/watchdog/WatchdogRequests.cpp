#include "watchdog/WatchdogRequests.h"

#include "common/Diagnostics.h"
#include "watchdog/DeviceNode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <linux/seccomp.h>
#include <linux/watchdog.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr int kMsPerTimeoutSecond = 1000;

std::vector<std::uint64_t> storageFor(std::size_t kernelBytes, std::size_t ownBytes)
{
    const std::size_t bytes = std::max(kernelBytes, ownBytes);
    return std::vector<std::uint64_t>(bytes / sizeof(std::uint64_t) + 1);
}
} // namespace

WatchdogRequests::WatchdogRequests(Descriptor listener, const DeviceNode* node, int timeoutMs)
    : m_listener(std::move(listener)), m_node(node),
      m_timeoutSeconds(std::max(1, timeoutMs / kMsPerTimeoutSecond))
{
    seccomp_notif_sizes sizes{};
    syscall(SYS_seccomp, SECCOMP_GET_NOTIF_SIZES, 0, &sizes);
    m_notification = storageFor(sizes.seccomp_notif, sizeof(seccomp_notif));
    m_response = storageFor(sizes.seccomp_notif_resp, sizeof(seccomp_notif_resp));
}

WatchdogRequests::Request WatchdogRequests::receive()
{
    std::fill(m_notification.begin(), m_notification.end(), 0);
    auto* const notification = reinterpret_cast<seccomp_notif*>(m_notification.data());
    if (ioctl(m_listener.get(), SECCOMP_IOCTL_NOTIF_RECV, notification) != 0)
    {
        // Killed while it waited.
        return Request::NotOurs;
    }
    const auto process = static_cast<pid_t>(notification->pid);
    const int file = static_cast<int>(notification->data.args[0]);
    // The id is asked for last: until then the process cannot have been replaced by another one
    // with the same number.
    if (!m_node->isOpenedAs(process, file) || !stillWaits(notification->id))
    {
        return Request::NotOurs;
    }
    return static_cast<std::uint32_t>(notification->data.args[1]) == WDIOC_GETTIMEOUT
               ? Request::GetTimeout
               : Request::KeepAlive;
}

void WatchdogRequests::answer(Request request, bool isRemoved)
{
    const auto& notification = *reinterpret_cast<const seccomp_notif*>(m_notification.data());
    std::fill(m_response.begin(), m_response.end(), 0);
    auto* const response = reinterpret_cast<seccomp_notif_resp*>(m_response.data());
    response->id = notification.id;
    if (request == Request::NotOurs)
    {
        response->flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
    }
    else if (isRemoved)
    {
        response->error = -ENODEV;
    }
    else if (request == Request::GetTimeout)
    {
        response->error = -writeTimeout(notification);
    }
    // Fails only when the asking thread has been killed meanwhile.
    (void)ioctl(m_listener.get(), SECCOMP_IOCTL_NOTIF_SEND, response);
}

int WatchdogRequests::writeTimeout(const seccomp_notif& notification) const
{
    int seconds = m_timeoutSeconds;
    iovec own = {&seconds, sizeof seconds};
    // An address in the other process, never followed in this one.
    const auto address = static_cast<std::uintptr_t>(notification.data.args[2]);
    iovec theirs = {nullptr, sizeof seconds};
    std::memcpy(&theirs.iov_base, &address, sizeof address);
    const auto process = static_cast<pid_t>(notification.pid);
    if (process_vm_writev(process, &own, 1, &theirs, 1, 0) == sizeof seconds)
    {
        return 0;
    }
    if (errno == EFAULT)
    {
        return EFAULT;
    }
    complain("cannot answer the time-out to process " + std::to_string(process) + ": " +
             errnoText() + "; let the guard and the program run as the same user");
    return EIO;
}

bool WatchdogRequests::stillWaits(std::uint64_t id) const
{
    return ioctl(m_listener.get(), SECCOMP_IOCTL_NOTIF_ID_VALID, &id) == 0;
}

} // namespace orvo::simulator
