#include "bus/SupervisorClient.h"

#include "dbus-proxy/BusNames.h"
#include "model/Periods.h"
#include "output/Progress.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace orvo::ctl
{

namespace
{

/// How often a wait looks whether the bus is still there: the bus library does not tell.
constexpr int kLookMs = 100;

BusAnswer failure(BusAnswer::Kind kind, const QString& detail)
{
    BusAnswer answer;
    answer.kind = kind;
    answer.detail = detail.toStdString();
    return answer;
}

/// Waits in the event loop; false when the bus went away meanwhile.
bool await(const QDBusPendingCall& pending, const QDBusConnection& bus, const std::string& what)
{
    QDBusPendingCallWatcher watcher(pending);
    QEventLoop loop;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    Progress progress(what);
    QElapsedTimer clock;
    clock.start();
    int shown = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop,
                     [&]
                     {
                         const int seconds = static_cast<int>(clock.elapsed()) / kMsPerSecond;
                         if (seconds > shown)
                         {
                             shown = seconds;
                             progress.show(seconds);
                         }
                         if (!bus.isConnected())
                         {
                             loop.exit(1);
                         }
                     });
    look.start(kLookMs);
    return watcher.isFinished() || loop.exec() == 0;
}

} // namespace

QDBusMessage SupervisorClient::message(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(QLatin1String(kWardexBusName), QLatin1String(kBusObjectPath),
                                       QLatin1String(kWardexBusName), method);
    call.setArguments(arguments);
    // Nobody may start a second supervisor by asking for it.
    call.setAutoStartService(false);
    return call;
}

BusAnswer SupervisorClient::answerOf(const QDBusMessage& reply)
{
    if (reply.type() == QDBusMessage::ErrorMessage)
    {
        const QDBusError error(reply);
        const QString detail = error.name() + ": " + error.message();
        // What a bus says of a name that had an owner until a moment ago, or that nobody may start.
        if (error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
            error.message().contains(QLatin1String("disconnected from message bus")))
        {
            return failure(BusAnswer::Kind::NoSupervisor, detail);
        }
        switch (error.type())
        {
        case QDBusError::ServiceUnknown:
            return failure(BusAnswer::Kind::NoSupervisor, detail);
        case QDBusError::NoReply:
        case QDBusError::Timeout:
        case QDBusError::TimedOut:
            return failure(BusAnswer::Kind::TimedOut, detail);
        case QDBusError::Disconnected:
        case QDBusError::NoServer:
        case QDBusError::NoNetwork:
            return failure(BusAnswer::Kind::NoBus, detail);
        default:
            return failure(BusAnswer::Kind::Refused, detail);
        }
    }
    BusAnswer answer;
    answer.values = reply.arguments();
    if (!reply.signature().startsWith("(is)"))
    {
        return failure(BusAnswer::Kind::Refused,
                       "its answer has the signature " + reply.signature());
    }
    answer.kind = BusAnswer::Kind::Answered;
    answer.values.first().value<QDBusArgument>() >> answer.status;
    answer.values.removeFirst();
    return answer;
}

BusAnswer SupervisorClient::call(const QString& method, const QVariantList& arguments,
                                 int timeoutMs, const std::string& what)
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
    {
        return failure(BusAnswer::Kind::NoBus, bus.lastError().message());
    }
    QElapsedTimer clock;
    clock.start();
    const QDBusPendingCall pending = bus.asyncCall(message(method, arguments), timeoutMs);
    BusAnswer answer = await(pending, bus, what)
                           ? answerOf(pending.reply())
                           : failure(BusAnswer::Kind::NoBus, "the bus went away");
    answer.seconds = static_cast<double>(clock.elapsed()) / kMsPerSecond;
    return answer;
}

BusAnswer SupervisorClient::send(const QString& method, const QVariantList& arguments)
{
    BusAnswer answer = call(method, arguments, kRefusalMs);
    if (answer.kind == BusAnswer::Kind::TimedOut)
    {
        answer.kind = BusAnswer::Kind::Answered;
    }
    return answer;
}

Problem SupervisorClient::problemOf(const BusAnswer& answer)
{
    switch (answer.kind)
    {
    case BusAnswer::Kind::NoBus:
        return {"system bus", "cannot be reached (" + answer.detail + ")",
                "See whether dbus-daemon runs; without it the supervisor cannot be asked."};
    case BusAnswer::Kind::NoSupervisor:
        return {kWardexBusName, "nobody owns this name on the system bus",
                "The supervisor does not run, or the bus policy keeps it from its name: wardexctl "
                "doctor tells."};
    case BusAnswer::Kind::TimedOut:
        return {kWardexBusName, "the supervisor does not answer in time",
                "It hangs, or waits for a script: wardexctl log shows its last records."};
    case BusAnswer::Kind::Refused:
    case BusAnswer::Kind::Answered:
        break;
    }
    return {kWardexBusName, "the call was refused (" + answer.detail + ")",
            "Be root, or see the bus policy: wardexctl doctor tells."};
}

} // namespace orvo::ctl
