#include "ServicePeer.h"

#include "Eventually.h"
#include "Files.h"

#include <QDBusConnectionInterface>

#include <filesystem>

namespace orvo::test
{

namespace
{
constexpr char kProgramsFolder[] = "/opt/orvo/bin/";
constexpr char kOrdersFolder[] = "/run/orders/";
constexpr char kOutputFolder[] = "/tmp/";
constexpr char kPingJournal[] = "/log/pings";
const QString kConnectionName = QStringLiteral("service-peer-test");
} // namespace

ServicePeer::ServicePeer(const std::string& shortName, const QString& busName)
    : m_shortName(shortName), m_busName(busName),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SystemBus, kConnectionName))
{
    const std::string program = kProgramsFolder + shortName;
    std::filesystem::create_directories("/log");
    std::filesystem::create_directories(kOrdersFolder);
    std::filesystem::remove(kPingJournal);
    std::filesystem::remove(program);
    std::filesystem::create_symlink(peer("simulated-service"), program);
    orderNothing();
}

ServicePeer::~ServicePeer()
{
    QDBusConnection::disconnectFromBus(kConnectionName);
}

void ServicePeer::start()
{
    m_process = std::make_unique<ChildProcess>(
        std::vector<std::string>{kProgramsFolder + m_shortName}, kOutputFolder + m_shortName);
}

void ServicePeer::startAndAwaitName()
{
    start();
    (void)awaitName();
}

bool ServicePeer::ownsName() const
{
    return m_bus.interface()->isServiceRegistered(m_busName);
}

bool ServicePeer::awaitName() const
{
    return eventually([this] { return ownsName(); });
}

bool ServicePeer::awaitNameGone() const
{
    return eventually([this] { return !ownsName(); });
}

unsigned ServicePeer::ownerPid() const
{
    const QDBusReply<uint> pid = m_bus.interface()->servicePid(m_busName);
    return pid.isValid() ? pid.value() : 0;
}

void ServicePeer::order(const std::string& lines) const
{
    replaceFile(kOrdersFolder + m_shortName, lines);
}

void ServicePeer::orderNothing() const
{
    std::filesystem::remove(kOrdersFolder + m_shortName);
}

QDBusMessage ServicePeer::ping(int timeoutMs) const
{
    return call(m_busName, QStringLiteral("doPing"), timeoutMs);
}

QString ServicePeer::pingedLevel() const
{
    const QDBusMessage reply = ping();
    return reply.type() == QDBusMessage::ErrorMessage ? reply.errorName()
                                                      : reply.arguments().value(1).toString();
}

QDBusMessage ServicePeer::call(const QString& interface, const QString& method, int timeoutMs) const
{
    return m_bus.call(
        QDBusMessage::createMethodCall(m_busName, QStringLiteral("/"), interface, method),
        QDBus::Block, timeoutMs);
}

std::vector<std::string> ServicePeer::output() const
{
    return linesOf(kOutputFolder + m_shortName);
}

std::vector<std::string> pingJournal()
{
    return journalOf(kPingJournal);
}

} // namespace orvo::test
