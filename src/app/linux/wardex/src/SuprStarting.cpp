#include "SuprStarting.h"

#include "RunLevel.h"
#include "SupervisionLimits.h"
#include "SuprDown.h"
#include "SuprUp.h"

namespace orvo
{

SuprStarting::SuprStarting(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
                           const QString& serviceName)
    : SuprState(context, machine, system, serviceName, kStartingBadPingThreshold)
{
}

QString SuprStarting::name() const
{
    return QStringLiteral("SuprStarting");
}

void SuprStarting::up()
{
    SuprState::up();
    goTo<SuprUp>();
}

void SuprStarting::down()
{
    SuprState::down();
    goTo<SuprDown>();
}

void SuprStarting::ping()
{
    const bool answered = pingService();
    if (answered && runLevel() == kRunLevelUp)
    {
        up();
        return;
    }
    if (answered && runLevel() == kRunLevelDown)
    {
        down();
        return;
    }
    countBadPing();
    if (isPatienceExhausted())
    {
        forgetBadPings();
        down();
        return;
    }
}

} // namespace orvo
