#include "SuprDown.h"

#include "RunLevel.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SupervisionLimits.h"
#include "SuprSMSystem.h"
#include "SuprStarting.h"

#include "logger/RedisLogger.h"

namespace orvo
{

SuprDown::SuprDown(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
                   const QString& serviceName)
    : SuprState(context, machine, system, serviceName, kDownBadPingThreshold)
{
}

QString SuprDown::name() const
{
    return QStringLiteral("SuprDown");
}

void SuprDown::entry()
{
    SuprState::entry();
    system().serviceIsDown(serviceName());
}

void SuprDown::up()
{
    SuprState::up();
    goTo<SuprStarting>();
}

void SuprDown::ping()
{
    if (system().stateName() == QLatin1String("SuprStartingSystem") &&
        !context().serviceInfo->isDeveloperMode())
    {
        up();
        return;
    }
    const bool answered = pingService();
    if (answered && (runLevel() == kRunLevelUp || runLevel() == kRunLevelStarting))
    {
        up();
        return;
    }
    countBadPing();
    if (isPatienceExhausted())
    {
        forgetBadPings();
        revive();
        return;
    }
}

void SuprDown::revive()
{
    if (context().serviceInfo->isDeveloperMode())
    {
        if (context().logger->isEnabled(Logger::WARN))
        {
            context().logger->logOnce(Logger::WARN,
                                      "Service %s considered dead, restarting .... (disabled)",
                                      qPrintable(serviceName()));
        }
        return;
    }
    if (context().logger->isEnabled(Logger::WARN))
    {
        context().logger->log(Logger::WARN, "Service %s considered dead, restarting",
                              qPrintable(serviceName()));
    }
    // Neither result changes anything: the fresh start phase finds out what became of the service.
    (void)context().serviceAction->doStopService(serviceName());
    (void)context().serviceAction->doStartService(serviceName());
    goTo<SuprStarting>();
}

} // namespace orvo
