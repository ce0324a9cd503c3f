#include "service/PingResponder.h"

#include "common/PeerPaths.h"
#include "service/PingAnswer.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QTimer>

#include <cstdlib>
#include <sys/prctl.h>

namespace orvo::simulator
{

PingResponder::PingResponder(const ServiceIdentity& identity)
    : m_identity(identity), m_orders(std::string(kOrdersFolder) + "/" + identity.shortName),
      m_journal(kPingJournal)
{
}

QString PingResponder::introspect(const QString& path) const
{
    if (path != QLatin1String("/"))
    {
        return QString();
    }
    return QStringLiteral("  <interface name=\"%1\">\n"
                          "    <method name=\"doPing\">\n"
                          "      <arg type=\"(is)\" direction=\"out\"/>\n"
                          "      <annotation name=\"org.qtproject.QtDBus.QtTypeName.Out0\" "
                          "value=\"orvo::ErrorStatus\"/>\n"
                          "      <arg name=\"runlevel\" type=\"s\" direction=\"out\"/>\n"
                          "    </method>\n"
                          "  </interface>\n")
        .arg(m_identity.busName);
}

bool PingResponder::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    if (!message.interface().isEmpty() && message.interface() != m_identity.busName)
    {
        return false;
    }
    if (message.member() != QLatin1String("doPing"))
    {
        // Qt would deny the whole object.
        connection.send(message.createErrorReply(
            QDBusError::UnknownMethod,
            QStringLiteral("%1 has only doPing here").arg(m_identity.busName)));
        return true;
    }
    const Order order = m_orders.next();
    m_journal.note(m_identity.shortName + " " + order.word);
    answer(PingAnswer::to(order), message, connection);
    return true;
}

void PingResponder::answer(const PingAnswer& answer, const QDBusMessage& message,
                           const QDBusConnection& connection)
{
    message.setDelayedReply(true);
    switch (answer.kind)
    {
    case PingAnswer::Kind::Silence:
        return;
    case PingAnswer::Kind::Crash:
        // The host must not be littered with core files of a device that is only simulated.
        prctl(PR_SET_DUMPABLE, 0);
        std::abort();
    case PingAnswer::Kind::Error:
        connection.send(message.createErrorReply(m_identity.busName + QStringLiteral(".Failed"),
                                                 answer.errorText));
        return;
    case PingAnswer::Kind::Reply:
        replyAfter(answer.delayMs, message.createReply(answer.values), connection);
    }
}

void PingResponder::replyAfter(int delayMs, const QDBusMessage& reply,
                               const QDBusConnection& connection)
{
    auto* const timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, this,
                     [timer, reply, connection]
                     {
                         connection.send(reply);
                         timer->deleteLater();
                     });
    timer->start(delayMs);
}

} // namespace orvo::simulator
