#include "ModelLog.h"
#include "SupervisorModel.h"

#include <algorithm>

namespace orvo::model
{

namespace
{

constexpr int kTickMs = 1000;
constexpr unsigned kStartingTicks = 5;
constexpr unsigned kUnstableTicks = 10;
constexpr int kRestarts = 3;
constexpr std::int64_t kWindowMs = 300'000;

} // namespace

const char* SupervisorModel::name(SystemPhase phase)
{
    switch (phase)
    {
    case SystemPhase::Starting:
        return "SuprStartingSystem";
    case SystemPhase::Stable:
        return "SuprStableSystem";
    case SystemPhase::Unstable:
        return "SuprUnstableSystem";
    case SystemPhase::Reboot:
        return "SuprRebootSystem";
    }
    return "";
}

void SupervisorModel::enterSystem(SystemPhase phase)
{
    m_state.system = phase;
    m_state.startingTicks = 0;
    log(kTrace, std::string(name(phase)) + "::entry");
    startTimer(kSystemTimer, kTickMs);
    if (phase == SystemPhase::Reboot)
    {
        restartSystem();
    }
}

void SupervisorModel::changeSystem(SystemPhase phase)
{
    log(kTrace, std::string(name(m_state.system)) + "::exit");
    enterSystem(phase);
}

void SupervisorModel::publish()
{
    std::string availability;
    for (const unsigned service : {Pictor, Vistor}) // in the order of their names
    {
        const bool isUp = (m_state.up & bitOf(service)) != 0;
        if (isUp && isKnown(service))
        {
            m_state.onBus |= bitOf(service);
        }
        else
        {
            m_state.onBus &= ~bitOf(service);
        }
        availability += availability.empty() ? "" : " ";
        availability += kServiceFacts[service].busName + std::string(isUp ? "=up" : "=down");
    }
    m_surroundings->signal(availability);
}

void SupervisorModel::reportUp(unsigned machine)
{
    const std::string where = name(m_state.system);
    const std::string service = kServiceFacts[machine].busName;
    log(kTrace, where + "::serviceIsUp " + service);
    if (m_state.system == SystemPhase::Reboot && !m_setting.isDeveloper)
    {
        return;
    }
    if (m_state.system == SystemPhase::Stable && m_state.up == kMustBeUp)
    {
        log(kWarn, where +
                       "::serviceIsUp: g_upServices == g_knownServices is suspicious when adding " +
                       service);
    }
    m_state.up |= bitOf(machine);
    publish();
    if (m_state.system != SystemPhase::Stable && m_state.up == kMustBeUp)
    {
        changeSystem(SystemPhase::Stable);
    }
}

void SupervisorModel::reportDown(unsigned machine)
{
    log(kTrace,
        std::string(name(m_state.system)) + "::serviceIsDown " + kServiceFacts[machine].busName);
    if (m_state.system == SystemPhase::Reboot)
    {
        return;
    }
    m_state.up &= ~bitOf(machine);
    publish();
    if (m_state.system == SystemPhase::Stable)
    {
        changeSystem(SystemPhase::Unstable);
    }
}

void SupervisorModel::tickSystem()
{
    if (!m_setting.isDeveloper)
    {
        if (m_isWatchdogOpen)
        {
            m_surroundings->feed();
        }
        else
        {
            log(kWarn, "Bello is dead!!!");
        }
    }
    if (m_state.system == SystemPhase::Starting && ++m_state.startingTicks > kStartingTicks)
    {
        changeSystem(SystemPhase::Unstable);
    }
    else if (m_state.system == SystemPhase::Unstable && ++m_state.unstableTicks > kUnstableTicks)
    {
        decide();
    }
}

void SupervisorModel::decide()
{
    const std::int64_t now = m_surroundings->wallClock();
    const auto recent =
        std::count_if(m_state.restarts.begin(), m_state.restarts.end(),
                      [now](std::int64_t restart) { return restart > now - kWindowMs; });
    if (recent >= kRestarts)
    {
        log(kEmerg, "Too many restarts(" + std::to_string(recent) +
                        ") detected in last 5 minutes: rebooting whole system ...");
        changeSystem(SystemPhase::Reboot);
        return;
    }
    m_state.restarts.push_back(now);
    restartPackage();
    m_state.unstableTicks = 0;
    changeSystem(SystemPhase::Starting);
}

} // namespace orvo::model
