#include "dbus-proxy/BusWait.h"

#include <QDBusConnection>
#include <QDBusPendingCall>

#include <algorithm>
#include <thread>

namespace orvo
{

namespace
{

/// Between two looks for the answer: a healthy service answers within the first few, which only
/// look for it, and a hung one is not worth the processor time of its whole time-out.
constexpr std::chrono::microseconds kFirstLookInterval{250};
constexpr std::chrono::microseconds kLongestLookInterval{8000};

} // namespace

QDBusMessage waitForReply(const QDBusPendingCall& call, const QDBusConnection& bus,
                          std::chrono::milliseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + timeout;
    Clock::duration interval = kFirstLookInterval;
    while (!call.isFinished())
    {
        const Clock::time_point now = Clock::now();
        const bool isLate = interval == kLongestLookInterval;
        if (now >= end || (isLate && !bus.isConnected()))
        {
            return {};
        }
        std::this_thread::sleep_for(std::min(interval, end - now));
        interval = std::min<Clock::duration>(2 * interval, kLongestLookInterval);
    }
    return call.reply();
}

} // namespace orvo
