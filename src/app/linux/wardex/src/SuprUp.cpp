#include "SuprUp.h"

#include "RunLevel.h"
#include "ServiceInfo.h"
#include "SupervisionLimits.h"
#include "SuprDown.h"
#include "SuprSMSystem.h"
#include "SuprStarting.h"

#include "logger/RedisLogger.h"

namespace orvo
{

SuprUp::SuprUp(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
               const QString& serviceName)
    : SuprState(context, machine, system, serviceName, kUpBadPingThreshold)
{
}

QString SuprUp::name() const
{
    return QStringLiteral("SuprUp");
}

void SuprUp::entry()
{
    SuprState::entry();
    system().serviceIsUp(serviceName());
}

void SuprUp::down()
{
    SuprState::down();
    goTo<SuprDown>();
}

void SuprUp::ping()
{
    if (pingService())
    {
        judgeAnswer();
        return;
    }
    judgeFailure();
}

void SuprUp::judgeFailure()
{
    countBadPing();
    if (context().logger->isEnabled(Logger::TRACE))
    {
        context().logger->log(Logger::TRACE, "Ping %s failed", qPrintable(serviceName()));
    }
    if (!context().serviceInfo->isRegistered(serviceName()))
    {
        if (context().logger->isEnabled(Logger::TRACE))
        {
            context().logger->log(Logger::TRACE, "Service %s not registered anymore?! Going down.",
                                  qPrintable(serviceName()));
        }
        down();
        return;
    }
    if (isPatienceExhausted())
    {
        context().logger->log(Logger::TRACE, "Ping threshold exceeded. Going down");
        down();
        return;
    }
}

void SuprUp::judgeAnswer()
{
    if (runLevel() == kRunLevelDown)
    {
        context().logger->log(Logger::TRACE, "System run level is down. Going down.");
        down();
        return;
    }
    if (runLevel() == kRunLevelStarting)
    {
        context().logger->log(Logger::TRACE, "System run level STARTING. Going starting");
        goTo<SuprStarting>();
        return;
    }
    forgetBadPings();
    if (!context().serviceInfo->isRegistered(serviceName()))
    {
        // It answers, so it is on the bus, whatever the watcher or another service's availability
        // map has made of it.
        (void)context().serviceInfo->registerService(serviceName());
    }
}

} // namespace orvo
