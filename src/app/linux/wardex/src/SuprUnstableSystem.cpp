#include "SuprUnstableSystem.h"

#include "ProcessTables.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SuprRebootSystem.h"
#include "SuprStableSystem.h"
#include "SuprStartingSystem.h"

#include "logger/RedisLogger.h"

#include <QDateTime>

#include <algorithm>

namespace orvo
{

SuprUnstableSystem::SuprUnstableSystem(SuprSMSystem* machine, const SupervisionContext* context,
                                       std::uint32_t tickLimit, std::uint32_t restartLimit,
                                       std::uint32_t windowMinutes)
    : SuprStateSystem(machine, context), m_tickLimit(tickLimit), m_restartLimit(restartLimit),
      m_windowMinutes(windowMinutes)
{
}

QString SuprUnstableSystem::name() const
{
    return QStringLiteral("SuprUnstableSystem");
}

void SuprUnstableSystem::serviceIsUp(const QString& service)
{
    SuprStateSystem::serviceIsUp(service);
    addService(service);
    if (areAllServicesUp())
    {
        goTo<SuprStableSystem>();
        return;
    }
}

void SuprUnstableSystem::serviceIsDown(const QString& service)
{
    SuprStateSystem::serviceIsDown(service);
    removeService(service);
}

void SuprUnstableSystem::ping()
{
    SuprStateSystem::ping();
    ++g_unstableTicks;
    if (g_unstableTicks > m_tickLimit)
    {
        restartPackageOrReboot();
        return;
    }
}

void SuprUnstableSystem::restartPackageOrReboot()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QDateTime windowStart = now.addSecs(-qint64{kSecondsPerMinute} * m_windowMinutes);
    const auto recentRestarts = static_cast<std::uint32_t>(
        std::count_if(g_restartHistory.cbegin(), g_restartHistory.cend(),
                      [&windowStart](const QDateTime& restart) { return restart > windowStart; }));
    if (recentRestarts >= m_restartLimit)
    {
        context().logger->log(Logger::EMERG,
                              "Too many restarts(%d) detected in last %d minutes: rebooting whole "
                              "system ...",
                              static_cast<int>(recentRestarts), static_cast<int>(m_windowMinutes));
        goTo<SuprRebootSystem>();
        return;
    }
    g_restartHistory.push_back(now);
    context().serviceAction->restartPackage(context().serviceInfo->isDeveloperMode());
    g_unstableTicks = 0;
    goTo<SuprStartingSystem>();
}

} // namespace orvo
