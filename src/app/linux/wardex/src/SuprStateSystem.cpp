#include "SuprStateSystem.h"

#include "DbusCmd.h"
#include "ProcessTables.h"
#include "RunLevel.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SupervisionLimits.h"
#include "SuprSMSystem.h"
#include "Watchdog.h"

#include "logger/RedisLogger.h"

#include <QVariantMap>

namespace orvo
{

SuprStateSystem::SuprStateSystem(SuprSMSystem* machine, const SupervisionContext* context)
    : m_machine(machine), m_context(context), m_timer(new QTimer(this))
{
    // Ticks are counted as seconds: Qt's usual timer may be a twentieth off.
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &SuprStateSystem::ping);
    if (!m_context->serviceInfo->isDeveloperMode())
    {
        (void)Watchdog::instance();
    }
}

SuprStateSystem::~SuprStateSystem() = default;

void SuprStateSystem::entry()
{
    trace("entry");
    m_timer->start(kSystemTickMs);
}

void SuprStateSystem::exit()
{
    trace("exit");
    m_timer->stop();
}

void SuprStateSystem::serviceIsUp(const QString& service)
{
    trace("serviceIsUp", service);
}

void SuprStateSystem::serviceIsDown(const QString& service)
{
    trace("serviceIsDown", service);
}

void SuprStateSystem::trace(const char* event) const
{
    if (m_context->logger->isEnabled(Logger::TRACE))
    {
        m_context->logger->log(Logger::TRACE, "%s::%s", qPrintable(name()), event);
    }
}

void SuprStateSystem::trace(const char* event, const QString& service) const
{
    if (m_context->logger->isEnabled(Logger::TRACE))
    {
        m_context->logger->log(Logger::TRACE, "%s::%s %s", qPrintable(name()), event,
                               qPrintable(service));
    }
}

void SuprStateSystem::addService(const QString& service)
{
    g_upServices.insert(service);
    publishAvailability();
}

void SuprStateSystem::removeService(const QString& service)
{
    g_upServices.erase(service);
    publishAvailability();
}

bool SuprStateSystem::areAllServicesUp()
{
    return g_upServices == g_knownServices;
}

void SuprStateSystem::publishAvailability()
{
    QVariantMap availability;
    for (const QString& service : g_knownServices)
    {
        const bool isUp = g_upServices.count(service) != 0;
        availability.insert(service, QString(isUp ? kRunLevelUp : kRunLevelDown));
    }
    m_context->dbusCmd->publishAvailability(availability);
}

void SuprStateSystem::changeTo(std::unique_ptr<SuprStateSystem> next)
{
    if (m_machine->transition(next.get()))
    {
        (void)next.release(); // the machine's from here on; this state is gone
    }
}

void SuprStateSystem::ping()
{
    const bool isDeveloperMode = m_context->serviceInfo->isDeveloperMode();
    if (!isDeveloperMode && !Watchdog::instance().feed())
    {
        m_context->logger->log(Logger::WARN, "Bello is dead!!!");
    }
    if (!m_context->serviceInfo->isSystemHealthy())
    {
        m_context->serviceAction->restartSystem(isDeveloperMode);
    }
}

} // namespace orvo
