#include "SuprStartingSystem.h"

#include "SuprStableSystem.h"
#include "SuprUnstableSystem.h"

namespace orvo
{

SuprStartingSystem::SuprStartingSystem(SuprSMSystem* machine, const SupervisionContext* context,
                                       std::uint32_t tickLimit, std::uint32_t tickCount)
    : SuprStateSystem(machine, context), m_tickLimit(tickLimit), m_tickCount(tickCount)
{
}

QString SuprStartingSystem::name() const
{
    return QStringLiteral("SuprStartingSystem");
}

void SuprStartingSystem::serviceIsUp(const QString& service)
{
    SuprStateSystem::serviceIsUp(service);
    addService(service);
    if (areAllServicesUp())
    {
        goTo<SuprStableSystem>();
        return;
    }
}

void SuprStartingSystem::serviceIsDown(const QString& service)
{
    SuprStateSystem::serviceIsDown(service);
    removeService(service);
}

void SuprStartingSystem::ping()
{
    SuprStateSystem::ping();
    ++m_tickCount;
    if (m_tickCount > m_tickLimit)
    {
        goTo<SuprUnstableSystem>();
        return;
    }
}

} // namespace orvo
