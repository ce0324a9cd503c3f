#include "BusPing.h"

#include "dbus-proxy/BusWait.h"
#include "dbus-proxy/ErrorStatus.h"

#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>

#include <chrono>

namespace orvo
{

namespace
{

/// The bus library's own time-out comes up to a twentieth early; the call is given this many times
/// the service's, and the end of the wait is told by the clock.
constexpr int kLibraryTimeoutFactor = 2;

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
