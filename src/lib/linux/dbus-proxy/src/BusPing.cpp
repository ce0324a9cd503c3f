#include "BusPing.h"

#include "dbus-proxy/ErrorStatus.h"

#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QThread>

#include <algorithm>

namespace orvo
{

namespace
{

/// Between two looks for the answer: a healthy service answers within the first few, and a hung one
/// is not worth the processor time of its whole time-out.
constexpr unsigned long kFirstLookIntervalUs = 250;
constexpr unsigned long kLongestLookIntervalUs = 8000;

/// The reply to a call, or an invalid message when the bus has ended.
///
/// Qt's own blocking call never returns when the bus crashes while it waits: the time-out ends with
/// the connection. It would hold the supervisor until the watchdog resets the device.
QDBusMessage waitForReply(const QDBusPendingCall& call, const QDBusConnection& bus)
{
    unsigned long intervalUs = kFirstLookIntervalUs;
    while (!call.isFinished())
    {
        if (!bus.isConnected())
        {
            return {};
        }
        QThread::usleep(intervalUs);
        intervalUs = std::min(2 * intervalUs, kLongestLookIntervalUs);
    }
    return call.reply();
}

} // namespace

bool pingOverBus(QDBusAbstractInterface& proxy, QString& runLevel)
{
    const QDBusMessage message =
        waitForReply(proxy.asyncCall(QStringLiteral("doPing")), proxy.connection());
    const QVariantList values = message.arguments();
    if (message.type() == QDBusMessage::ReplyMessage && values.count() == 2)
    {
        runLevel = qdbus_cast<QString>(values.at(1));
    }
    const QDBusReply<ErrorStatus> status = message;
    return message.type() == QDBusMessage::ReplyMessage && status.isValid();
}

} // namespace orvo
