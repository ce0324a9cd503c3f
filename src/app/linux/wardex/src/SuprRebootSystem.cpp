#include "SuprRebootSystem.h"

#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SuprStableSystem.h"

namespace orvo
{

SuprRebootSystem::SuprRebootSystem(SuprSMSystem* machine, const SupervisionContext* context)
    : SuprStateSystem(machine, context)
{
}

QString SuprRebootSystem::name() const
{
    return QStringLiteral("SuprRebootSystem");
}

void SuprRebootSystem::entry()
{
    SuprStateSystem::entry();
    context().serviceAction->restartSystem(context().serviceInfo->isDeveloperMode());
}

void SuprRebootSystem::serviceIsUp(const QString& service)
{
    SuprStateSystem::serviceIsUp(service);
    if (!context().serviceInfo->isDeveloperMode())
    {
        return;
    }
    addService(service);
    if (areAllServicesUp())
    {
        goTo<SuprStableSystem>();
        return;
    }
}

} // namespace orvo
