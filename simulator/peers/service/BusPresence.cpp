#include "service/BusPresence.h"

#include "common/Diagnostics.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusVirtualObject>

namespace orvo::simulator
{

namespace
{
constexpr int kClaimPeriodMs = 25;
constexpr int kClaimLimit = 400;
} // namespace

BusPresence::BusPresence(const QString& busName, QDBusVirtualObject* object)
    : m_busName(busName), m_object(object), m_bus(QDBusConnection::systemBus())
{
    m_claimTimer.setSingleShot(true);
    m_claimTimer.setInterval(kClaimPeriodMs);
    QObject::connect(&m_claimTimer, &QTimer::timeout, m_object, [this] { claimName(); });
}

void BusPresence::begin()
{
    if (!m_bus.isConnected())
    {
        giveUp(QStringLiteral("cannot reach the system bus: %1; start dbus-daemon first")
                   .arg(m_bus.lastError().message()));
        return;
    }
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  QCoreApplication::instance(), SLOT(quit()));
    // The object goes first: whoever sees the name may ping at once.
    if (!m_bus.registerVirtualObject(QStringLiteral("/"), m_object))
    {
        giveUp(QStringLiteral("cannot offer an object at /: %1").arg(m_bus.lastError().message()));
        return;
    }
    claimName();
}

void BusPresence::claimName()
{
    if (m_bus.registerService(m_busName))
    {
        return;
    }
    const QDBusError error = m_bus.lastError();
    if (++m_refusals >= kClaimLimit || error.type() == QDBusError::AccessDenied)
    {
        giveUp(QStringLiteral("cannot own %1: %2; stop its other owner or see the bus policy")
                   .arg(m_busName, error.isValid() ? error.message()
                                                   : QStringLiteral("another process owns it")));
        return;
    }
    m_claimTimer.start();
}

void BusPresence::giveUp(const QString& reason)
{
    complain(reason.toStdString());
    // Also before the loop runs, when a plain exit() would be forgotten.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
}

} // namespace orvo::simulator
