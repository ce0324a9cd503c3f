#include "top/BusLink.h"

#include "dbus-proxy/BusNames.h"
#include "model/Periods.h"

#include <QDBusPendingCallWatcher>
#include <QDeadlineTimer>
#include <QTimer>

#include <utility>

namespace orvo::ctl
{

namespace
{

std::int64_t nowMs()
{
    return QDeadlineTimer::current().deadline();
}

BusAnswer noBus(const QString& detail)
{
    BusAnswer answer;
    answer.detail = detail.toStdString();
    return answer;
}

} // namespace

BusLink::BusLink() : m_bus(QString())
{
    connect();
}

BusLink::~BusLink()
{
    QDBusConnection::disconnectFromBus(m_name);
}

void BusLink::connect()
{
    QDBusConnection::disconnectFromBus(m_name);
    m_name = QStringLiteral("wardexctl-top-%1").arg(++m_attempts);
    m_bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_name);
    m_bus.connect(QLatin1String(kWardexBusName), QLatin1String(kBusObjectPath),
                  QLatin1String(kWardexBusName), QStringLiteral("signalServiceAvailability"), this,
                  SIGNAL(moved()));
    m_bus.connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                  QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"),
                  {QLatin1String(kWardexBusName)}, QString(), this, SIGNAL(moved()));
}

void BusLink::look()
{
    if (!m_bus.isConnected())
    {
        failOpenCalls();
        connect();
    }
}

void BusLink::failOpenCalls()
{
    while (!m_open.empty())
    {
        hand(m_open.begin()->first, noBus(QStringLiteral("the bus went away")));
    }
}

void BusLink::call(const char* method, const QVariantList& arguments, int timeoutMs, Taker taker)
{
    const std::uint64_t number = ++m_calls;
    m_open[number] = {std::move(taker), nowMs()};
    if (!m_bus.isConnected())
    {
        const BusAnswer answer = noBus(m_bus.lastError().message());
        QTimer::singleShot(0, this, [this, number, answer] { hand(number, answer); });
        return;
    }
    auto* const watcher = new QDBusPendingCallWatcher(
        m_bus.asyncCall(SupervisorClient::message(QLatin1String(method), arguments), timeoutMs),
        this);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this,
                     [this, number](QDBusPendingCallWatcher* finished)
                     {
                         finished->deleteLater();
                         hand(number, SupervisorClient::answerOf(finished->reply()));
                     });
}

void BusLink::hand(std::uint64_t number, BusAnswer answer)
{
    const auto found = m_open.find(number);
    if (found == m_open.end())
    {
        return;
    }
    const OpenCall call = std::move(found->second);
    m_open.erase(found);
    answer.seconds = static_cast<double>(nowMs() - call.beginMs) / kMsPerSecond;
    call.taker(answer);
}

} // namespace orvo::ctl
