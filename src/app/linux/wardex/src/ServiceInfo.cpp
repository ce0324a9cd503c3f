#include "ServiceInfo.h"

#include "DevicePaths.h"
#include "ProcessRun.h"
#include "ProcessTables.h"
#include "logger/RedisLogger.h"

#include <QRegularExpression>

namespace orvo
{

namespace
{

ServiceInfo::Service* find(const QString& name)
{
    const auto entry = g_services.find(name);
    return entry == g_services.end() ? nullptr : entry->second.get();
}

} // namespace

ServiceInfo::Service::Service(const QString& name, int pingTimeoutMs, const QString& initScript)
    : m_name(name), m_pingTimeoutMs(pingTimeoutMs), m_initScript(initScript)
{
}

ServiceInfo::ServiceInfo(Logger::RedisLogger* logger, bool developerMode)
    : m_logger(logger), m_developerMode(developerMode)
{
}

ServiceInfo::~ServiceInfo() = default;

void ServiceInfo::addService(const QString& name, ServicePtr service)
{
    g_services.try_emplace(name, std::move(service));
}

bool ServiceInfo::isKnown(const QString& name)
{
    return find(name) != nullptr;
}

QString ServiceInfo::processName(const QString& name)
{
    const Service* service = find(name);
    return service != nullptr ? service->name() : QString();
}

QString ServiceInfo::initScript(const QString& name)
{
    const Service* service = find(name);
    return service != nullptr ? service->initScript() : QString();
}

int ServiceInfo::pingInterval(const QString& name)
{
    const Service* service = find(name);
    const int intervalMs = service != nullptr ? service->pingTimeout() : 0;
    if (m_logger->isEnabled(Logger::TRACE))
    {
        m_logger->log(Logger::TRACE, "Ping interval of service %s is %d", qPrintable(name),
                      intervalMs);
    }
    return intervalMs;
}

bool ServiceInfo::setPingInterval(const QString& name, int intervalMs)
{
    if (Service* service = find(name))
    {
        service->setPingTimeout(intervalMs);
    }
    if (m_logger->isEnabled(Logger::TRACE))
    {
        m_logger->log(Logger::TRACE, "Set Ping interval of service %s to %d", qPrintable(name),
                      intervalMs);
    }
    return false;
}

bool ServiceInfo::isAlive(const QString& name, QString& runLevel)
{
    if (Service* service = find(name))
    {
        return service->isAlive(runLevel);
    }
    if (m_developerMode)
    {
        if (m_logger->isEnabled(Logger::ERROR))
        {
            m_logger->logOnce(Logger::ERROR, "%s: Unknown service %s", "isAlive", qPrintable(name));
        }
    }
    else
    {
        if (m_logger->isEnabled(Logger::ERROR))
        {
            m_logger->log(Logger::ERROR, "%s: Unknown service %s", "isAlive", qPrintable(name));
        }
    }
    return false;
}

bool ServiceInfo::isProcessRunning(const QString& processName)
{
    const ProcessOutcome processList = runProcess(QString::fromLatin1(kProcessListProgram), {});
    if (!processList.succeeded())
    {
        if (m_logger->isEnabled(Logger::ERROR))
        {
            m_logger->log(Logger::ERROR, "%s: stderr: %s", "isProcessRunning",
                          qPrintable(processList.err));
        }
        return false;
    }
    static const QRegularExpression kWhiteSpace(QStringLiteral("\\s+"),
                                                QRegularExpression::UseUnicodePropertiesOption);
    return processList.out.split(kWhiteSpace).contains(processName, Qt::CaseSensitive);
}

bool ServiceInfo::registerService(const QString& name)
{
    if (!isKnown(name))
    {
        return false;
    }
    m_registered.insert(name);
    return true;
}

bool ServiceInfo::unregisterService(const QString& name)
{
    m_registered.erase(name);
    return isKnown(name);
}

bool ServiceInfo::isRegistered(const QString& name) const
{
    return m_registered.count(name) != 0;
}

QStringList ServiceInfo::registeredServices() const
{
    QStringList names;
    for (const QString& name : m_registered)
    {
        names.append(name);
    }
    return names;
}

} // namespace orvo
