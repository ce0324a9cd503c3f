#include "BusPing.h"

#include "dbus-proxy/ErrorStatus.h"

#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>

#include <algorithm>
#include <chrono>
#include <thread>

namespace orvo
{

namespace
{

/// Between two looks for the answer: a healthy service answers within the first few, which only
/// look for it, and a hung one is not worth the processor time of its whole time-out.
constexpr std::chrono::microseconds kFirstLookInterval{250};
constexpr std::chrono::microseconds kLongestLookInterval{8000};

/// The bus library's own time-out comes up to a twentieth early; the call is given this many times
/// the service's, and the end of the wait is told by the clock.
constexpr int kLibraryTimeoutFactor = 2;

/// The reply to a call, or an invalid message when time is up or the bus has ended.
///
/// Qt's own blocking call never returns when the bus crashes while it waits: the time-out ends with
/// the connection. It would hold the supervisor until the watchdog resets the device.
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

/// Sends the call through the proxy, whose names were checked when it was made.
QDBusPendingCall startPing(QDBusAbstractInterface& proxy)
{
    const int timeoutMs = proxy.timeout();
    proxy.setTimeout(kLibraryTimeoutFactor * timeoutMs);
    QDBusPendingCall call = proxy.asyncCallWithArgumentList(QStringLiteral("doPing"), {});
    proxy.setTimeout(timeoutMs);
    return call;
}

} // namespace

bool pingOverBus(QDBusAbstractInterface& proxy, QString& runLevel)
{
    const QDBusMessage message = waitForReply(startPing(proxy), proxy.connection(),
                                              std::chrono::milliseconds(proxy.timeout()));
    const QVariantList values = message.arguments();
    if (message.type() == QDBusMessage::ReplyMessage && values.count() == 2)
    {
        runLevel = qdbus_cast<QString>(values.at(1));
    }
    const QDBusReply<ErrorStatus> status = message;
    return message.type() == QDBusMessage::ReplyMessage && status.isValid();
}

} // namespace orvo
