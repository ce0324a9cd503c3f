#include "SimulatedService.h"

#include "BusDaemon.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/ErrorStatus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <QThread>
#include <QTimerEvent>

#include <mutex>

namespace orvo::test
{

/// The object at "/", called in the service's own thread.
class SimulatedService::Peer : public QDBusVirtualObject
{
public:
    struct Orders
    {
        QVariantList values;
        QString errorName;
        int delayMs{0};
        bool silent{false};
    };

    Peer() { answerWith(goodAnswer(QStringLiteral("up"))); }

    static QVariantList goodAnswer(const QString& runLevel)
    {
        return {QVariant::fromValue(ErrorStatus()), runLevel};
    }

    void answerWith(const QVariantList& values)
    {
        change(
            [&values](Orders& orders)
            {
                orders.values = values;
                orders.errorName.clear();
                orders.silent = false;
            });
    }

    template <typename Change>
    void change(Change change)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change(m_orders);
    }

    [[nodiscard]] int pings() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_pings;
    }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.member() != QLatin1String("doPing"))
        {
            return false;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_pings;
        if (!m_orders.silent)
        {
            const QDBusMessage answer =
                m_orders.errorName.isEmpty()
                    ? message.createReply(m_orders.values)
                    : message.createErrorReply(m_orders.errorName, QStringLiteral("as ordered"));
            m_waiting.insert(startTimer(m_orders.delayMs), {answer, connection});
        }
        return true;
    }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        killTimer(event->timerId());
        const Waiting waiting = m_waiting.take(event->timerId());
        waiting.connection.send(waiting.answer);
    }

private:
    struct Waiting
    {
        QDBusMessage answer;
        QDBusConnection connection{QString()};
    };

    mutable std::mutex m_mutex;
    Orders m_orders;
    int m_pings{0};
    QMap<int, Waiting> m_waiting;
};

/// The service's own way to the bus and the thread in which its object lives.
class SimulatedService::Connection
{
public:
    Connection(const QString& busName, Peer* peer)
        : m_busName(busName), m_bus(QDBusConnection::connectToBus(
                                  QString::fromStdString(BusDaemon::ofThisProcess().address()),
                                  QStringLiteral("simulated ") + busName))
    {
        peer->moveToThread(&m_thread);
        m_thread.start();
        m_bus.registerVirtualObject(QLatin1String(kBusObjectPath), peer);
    }

    ~Connection()
    {
        const QString connectionName = m_bus.name();
        m_bus.unregisterObject(QLatin1String(kBusObjectPath));
        m_bus.unregisterService(m_busName);
        m_thread.quit();
        m_thread.wait();
        QDBusConnection::disconnectFromBus(connectionName);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void ownName()
    {
        if (!m_bus.registerService(m_busName))
        {
            qFatal("%s cannot be owned: %s", qPrintable(m_busName),
                   qPrintable(m_bus.lastError().message()));
        }
    }

    void releaseName() { m_bus.unregisterService(m_busName); }

private:
    QString m_busName;
    QDBusConnection m_bus;
    QThread m_thread;
};

SimulatedService::SimulatedService(const QString& busName)
    : m_peer(std::make_unique<Peer>()),
      m_connection(std::make_unique<Connection>(busName, m_peer.get()))
{
    m_connection->ownName();
}

SimulatedService::~SimulatedService()
{
    // The object outlives its thread, whose last call may be in it.
    m_connection.reset();
}

void SimulatedService::answers(const QString& runLevel)
{
    m_peer->answerWith(Peer::goodAnswer(runLevel));
}

void SimulatedService::answersWith(const QVariantList& values)
{
    m_peer->answerWith(values);
}

void SimulatedService::answersWithError(const QString& errorName)
{
    m_peer->change([&errorName](Peer::Orders& orders) { orders.errorName = errorName; });
}

void SimulatedService::answersAfter(int delayMs)
{
    m_peer->change([delayMs](Peer::Orders& orders) { orders.delayMs = delayMs; });
}

void SimulatedService::staysSilent()
{
    m_peer->change([](Peer::Orders& orders) { orders.silent = true; });
}

void SimulatedService::leavesTheBus()
{
    m_connection->releaseName();
}

void SimulatedService::returnsToTheBus()
{
    m_connection->ownName();
}

int SimulatedService::pings() const
{
    return m_peer->pings();
}

} // namespace orvo::test
