#include "SuprStableSystem.h"

#include "SuprUnstableSystem.h"

#include "logger/RedisLogger.h"

namespace orvo
{

SuprStableSystem::SuprStableSystem(SuprSMSystem* machine, const SupervisionContext* context)
    : SuprStateSystem(machine, context)
{
}

QString SuprStableSystem::name() const
{
    return QStringLiteral("SuprStableSystem");
}

void SuprStableSystem::serviceIsUp(const QString& service)
{
    SuprStateSystem::serviceIsUp(service);
    if (areAllServicesUp())
    {
        if (context().logger->isEnabled(Logger::WARN))
        {
            context().logger->log(
                Logger::WARN,
                "%s::%s: g_upServices == g_knownServices is suspicious when adding %s",
                qPrintable(name()), "serviceIsUp", qPrintable(service));
        }
    }
    addService(service);
}

void SuprStableSystem::serviceIsDown(const QString& service)
{
    SuprStateSystem::serviceIsDown(service);
    removeService(service);
    goTo<SuprUnstableSystem>();
}

} // namespace orvo
