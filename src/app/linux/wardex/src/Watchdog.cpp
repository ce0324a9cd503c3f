#include "Watchdog.h"

#include "DevicePaths.h"

#include <fcntl.h>
#include <linux/watchdog.h>
#include <sys/ioctl.h>

namespace orvo
{

Watchdog& Watchdog::instance()
{
    static Watchdog watchdog;
    return watchdog;
}

// Closed in children: a service that inherited the descriptor would keep the node busy, and a new
// supervisor could not open it in time.
Watchdog::Watchdog() : m_node(::open(kWatchdogNode, O_RDWR | O_CLOEXEC))
{
    int countdownSeconds = 0;
    (void)::ioctl(m_node.get(), WDIOC_GETTIMEOUT,
                  &countdownSeconds); // noted by the driver's trace only
}

Watchdog::~Watchdog() = default;

bool Watchdog::feed()
{
    if (!m_node.isOpen())
    {
        return false;
    }
    // Whether the driver took it shows by itself: the device is reset or it is not.
    (void)::ioctl(m_node.get(), WDIOC_KEEPALIVE, nullptr);
    return true;
}

} // namespace orvo
