#include "observer/BusObserver.h"

#include "common/Diagnostics.h"
#include "observer/JsonLine.h"

#include <QDBusArgument>
#include <QVariantMap>

namespace orvo::simulator
{

namespace
{
constexpr int kRetryPeriodMs = 50;
} // namespace

BusObserver::BusObserver(const std::string& journal) : m_journal(journal)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &BusObserver::attach);
}

BusObserver::~BusObserver()
{
    QDBusConnection::disconnectFromBus(m_connectionName);
}

bool BusObserver::begin()
{
    m_retry.start(0);
    return m_journal.isOpen();
}

void BusObserver::attach()
{
    QDBusConnection::disconnectFromBus(m_connectionName);
    m_connectionName = QStringLiteral("observer-%1").arg(++m_attempts);
    if (!listen())
    {
        m_retry.start(kRetryPeriodMs);
        return;
    }
    m_journal.append(JsonLine("listening").str());
}

bool BusObserver::listen()
{
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_connectionName);
    const QString busName = QStringLiteral("org.freedesktop.DBus");
    if (!bus.isConnected() ||
        !bus.connect(busName, QStringLiteral("/org/freedesktop/DBus"), busName,
                     QStringLiteral("NameOwnerChanged"), this,
                     SLOT(nameOwnerChanged(QString, QString, QString))) ||
        !bus.connect(QString(), QString(), QStringLiteral("com.orvo.wardex"),
                     QStringLiteral("signalServiceAvailability"), this,
                     SLOT(availabilityChanged(QDBusMessage))))
    {
        return false;
    }
    // Qt does not wait for its match rules; the bus handles them before this question.
    const QDBusMessage answer = bus.call(QDBusMessage::createMethodCall(
        busName, QStringLiteral("/org/freedesktop/DBus"), busName, QStringLiteral("GetId")));
    return answer.type() == QDBusMessage::ReplyMessage &&
           bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                       QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                       this, SLOT(lost())) &&
           bus.isConnected();
}

void BusObserver::nameOwnerChanged(const QString& name, const QString& /*oldOwner*/,
                                   const QString& newOwner)
{
    if (name.startsWith(QLatin1String("com.orvo.")))
    {
        m_journal.append(JsonLine("name")
                             .text("name", name.toStdString())
                             .flag("owned", !newOwner.isEmpty())
                             .str());
    }
}

void BusObserver::availabilityChanged(const QDBusMessage& signal)
{
    if (signal.signature() != QLatin1String("a{sv}"))
    {
        complain("left out a signalServiceAvailability of signature '" +
                 signal.signature().toStdString() + "'; a{sv} is expected");
        return;
    }
    std::map<std::string, std::string> services;
    const auto states = qdbus_cast<QVariantMap>(signal.arguments().constFirst());
    for (auto state = states.cbegin(); state != states.cend(); ++state)
    {
        services[state.key().toStdString()] = state.value().toString().toStdString();
    }
    m_journal.append(JsonLine("availability")
                         .texts("services", services)
                         .text("sender", signal.service().toStdString())
                         .text("path", signal.path().toStdString())
                         .str());
}

void BusObserver::lost()
{
    m_journal.append(JsonLine("bus-lost").str());
    m_retry.start(kRetryPeriodMs);
}

} // namespace orvo::simulator
