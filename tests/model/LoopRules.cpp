#include "ModelLog.h"
#include "SupervisorModel.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace orvo::model
{

SupervisorModel::SupervisorModel(const ModelSetting& setting, Surroundings* surroundings)
    : m_setting(setting), m_surroundings(surroundings)
{
}

void SupervisorModel::powerOn()
{
    m_state = ModelState();
    for (unsigned service = 0; service < kServices; ++service)
    {
        m_state.intervals[service] = kServiceFacts[service].intervalMs;
    }
    // There is no bus: supervision does without its own service there.
    log(kError, "Could not register DBus service com.orvo.wardex");
    log(kError, "Could not register DBus object");
    if (!m_setting.isDeveloper && !m_isWatchdogAsked)
    {
        m_isWatchdogAsked = true; // once in the life of a process
        m_isWatchdogOpen = m_surroundings->openWatchdog();
    }
    enterSystem(SystemPhase::Starting);
    enter(Vistor, ServicePhase::Starting);
    enter(Pictor, ServicePhase::Starting);
}

void SupervisorModel::startTimer(unsigned timer, int intervalMs)
{
    m_state.timers[timer] = {intervalMs, m_surroundings->now() + intervalMs, ++m_state.timerOrder};
}

std::int64_t SupervisorModel::nextDeadline() const
{
    std::int64_t next = std::numeric_limits<std::int64_t>::max();
    for (const ModelTimer& timer : m_state.timers)
    {
        if (timer.intervalMs > 0) // others fire in any pass and give no reason for one
        {
            next = std::min(next, timer.due);
        }
    }
    return next;
}

void SupervisorModel::runUntil(std::int64_t moment)
{
    do
    {
        m_surroundings->moveTo(std::min(nextDeadline(), moment));
        passOnce();
    } while (!m_state.isRebooting &&
             (m_surroundings->now() < moment || nextDeadline() <= m_surroundings->now()));
}

void SupervisorModel::passOnce()
{
    std::vector<std::tuple<std::int64_t, std::uint64_t, unsigned>> due;
    for (unsigned timer = 0; timer < m_state.timers.size(); ++timer)
    {
        if (m_state.timers[timer].due <= m_surroundings->now())
        {
            due.emplace_back(m_state.timers[timer].due, m_state.timers[timer].order, timer);
        }
    }
    std::sort(due.begin(), due.end());
    for (const auto& [moment, order, timer] : due)
    {
        // A timer that was started again meanwhile is another one.
        if (m_state.timers[timer].order == order && !m_state.isRebooting)
        {
            fire(timer);
        }
    }
}

void SupervisorModel::fire(unsigned timer)
{
    ModelTimer& fired = m_state.timers[timer];
    fired.due += fired.intervalMs;
    if (fired.due < m_surroundings->now())
    {
        fired.due = m_surroundings->now() + fired.intervalMs;
    }
    fired.order = ++m_state.timerOrder;
    if (timer == kSystemTimer)
    {
        tickSystem();
    }
    else
    {
        tickService(timer);
    }
    if (m_watcher)
    {
        m_watcher(timer);
    }
}

} // namespace orvo::model
