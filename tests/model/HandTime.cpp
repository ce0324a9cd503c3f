#include "HandTime.h"

#include <QCoreApplication>
#include <QTimerEvent>

#include <algorithm>

namespace orvo::model
{

void HandTime::install()
{
    QCoreApplication::setEventDispatcher(new HandTime);
    // The application object takes it.
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

HandTime& HandTime::instance()
{
    auto* const time = dynamic_cast<HandTime*>(QAbstractEventDispatcher::instance());
    if (time == nullptr)
    {
        qFatal("this process does not run by hand");
    }
    return *time;
}

std::vector<HandTime::Timer> HandTime::timers() const
{
    std::vector<std::pair<unsigned, Timer>> ordered;
    for (const auto& [id, timer] : m_timers)
    {
        ordered.emplace_back(timer.order, Timer{id, timer.intervalMs, timer.object});
    }
    std::sort(ordered.begin(), ordered.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    std::vector<Timer> timers;
    timers.reserve(ordered.size());
    for (const auto& [order, timer] : ordered)
    {
        timers.push_back(timer);
    }
    return timers;
}

void HandTime::fire(const Timer& timer)
{
    QTimerEvent event(timer.id);
    QCoreApplication::sendEvent(timer.object, &event);
}

bool HandTime::processEvents(QEventLoop::ProcessEventsFlags /*flags*/)
{
    QCoreApplication::sendPostedEvents();
    return true;
}

void HandTime::registerTimer(int timerId, int interval, Qt::TimerType timerType, QObject* object)
{
    m_timers[timerId] = {interval, timerType, object, ++m_started};
}

bool HandTime::unregisterTimer(int timerId)
{
    return m_timers.erase(timerId) != 0;
}

bool HandTime::unregisterTimers(QObject* object)
{
    const std::size_t before = m_timers.size();
    for (auto timer = m_timers.begin(); timer != m_timers.end();)
    {
        timer = timer->second.object == object ? m_timers.erase(timer) : std::next(timer);
    }
    return m_timers.size() != before;
}

QList<QAbstractEventDispatcher::TimerInfo> HandTime::registeredTimers(QObject* object) const
{
    QList<TimerInfo> timers;
    for (const auto& [id, timer] : m_timers)
    {
        if (timer.object == object)
        {
            timers.append(TimerInfo(id, timer.intervalMs, timer.type));
        }
    }
    return timers;
}

} // namespace orvo::model
