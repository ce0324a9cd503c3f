#include "VirtualTime.h"

#include "VirtualClock.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimerEvent>

#include <algorithm>
#include <limits>
#include <tuple>
#include <vector>

#include <sys/eventfd.h>
#include <unistd.h>

// Exported by Qt for dispatchers outside of it, but declared in no public header.
Q_CORE_EXPORT uint qGlobalPostedEventsCount();

namespace orvo::test
{

namespace
{

constexpr int kForever = -1;
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

short eventsOf(const QSocketNotifier& notifier)
{
    switch (notifier.type())
    {
    case QSocketNotifier::Read:
        return POLLIN | POLLHUP | POLLERR;
    case QSocketNotifier::Write:
        return POLLOUT | POLLERR;
    case QSocketNotifier::Exception:
        return POLLPRI;
    }
    return 0;
}

} // namespace

VirtualTime::VirtualTime() : m_wakeUpEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    VirtualClock::set(kPowerOn);
}

VirtualTime::~VirtualTime()
{
    VirtualClock::release();
    close(m_wakeUpEvent);
}

void VirtualTime::install()
{
    QCoreApplication::setEventDispatcher(new VirtualTime);
    // The application object takes it.
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

VirtualTime& VirtualTime::instance()
{
    auto* const time = dynamic_cast<VirtualTime*>(QAbstractEventDispatcher::instance());
    if (time == nullptr)
    {
        qFatal("this program does not run in virtual time: see VirtualTimeMain.cpp");
    }
    return *time;
}

void VirtualTime::advance(std::int64_t ms)
{
    const std::int64_t target = m_now + ms;
    do
    {
        moveTo(std::min(nextDeadline(), target));
        pass(0);
    } while (m_now < target || nextDeadline() <= m_now);
}

void VirtualTime::spend(std::int64_t ms)
{
    moveTo(m_now + ms);
}

void VirtualTime::moveTo(std::int64_t now)
{
    if (now > m_now)
    {
        VirtualClock::step(now - m_now);
        m_now = now;
    }
}

bool VirtualTime::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    const bool mayWait = flags.testFlag(QEventLoop::WaitForMoreEvents) && !hasDueTimer();
    return pass(mayWait ? kForever : 0);
}

bool VirtualTime::pass(int waitMs)
{
    Q_EMIT awake();
    const bool hadPosted = hasPendingEvents();
    QCoreApplication::sendPostedEvents();
    Q_EMIT aboutToBlock();
    const bool servedSockets = serveSockets(hadPosted ? 0 : waitMs);
    const bool firedTimers = fireTimers();
    return hadPosted || servedSockets || firedTimers;
}

bool VirtualTime::hasPendingEvents()
{
    return qGlobalPostedEventsCount() > 0;
}

bool VirtualTime::serveSockets(int waitMs)
{
    std::vector<pollfd> descriptors{{m_wakeUpEvent, POLLIN, 0}};
    const std::vector<QSocketNotifier*> notifiers(m_notifiers.cbegin(), m_notifiers.cend());
    for (const QSocketNotifier* notifier : notifiers)
    {
        descriptors.push_back({static_cast<int>(notifier->socket()), eventsOf(*notifier), 0});
    }
    if (poll(descriptors.data(), descriptors.size(), waitMs) <= 0)
    {
        return false;
    }
    eventfd_t wakeUps = 0;
    (void)eventfd_read(m_wakeUpEvent, &wakeUps);
    for (std::size_t i = 0; i < notifiers.size(); ++i)
    {
        const bool isReady = descriptors[i + 1].revents != 0;
        const bool stillThere =
            std::find(m_notifiers.cbegin(), m_notifiers.cend(), notifiers[i]) != m_notifiers.cend();
        if (isReady && stillThere)
        {
            QEvent activated(QEvent::SockAct);
            QCoreApplication::sendEvent(notifiers[i], &activated);
        }
    }
    return true;
}

bool VirtualTime::fireTimers()
{
    std::vector<std::tuple<std::int64_t, std::uint64_t, int>> due;
    for (const auto& [id, timer] : m_timers)
    {
        if (timer.due <= m_now)
        {
            due.emplace_back(timer.due, timer.order, id);
        }
    }
    std::sort(due.begin(), due.end());
    for (const auto& [moment, order, id] : due)
    {
        const auto timer = m_timers.find(id);
        const bool isTheSame = timer != m_timers.end() && timer->second.order == order;
        if (isTheSame && !timer->second.isFiring)
        {
            fire(id, timer->second);
        }
    }
    return !due.empty();
}

void VirtualTime::fire(int timerId, Timer& timer)
{
    timer.due += timer.interval;
    if (timer.due < m_now)
    {
        timer.due = m_now + timer.interval;
    }
    const std::uint64_t order = ++m_startedTimers;
    timer.order = order;
    timer.isFiring = true;

    QTimerEvent event(timerId);
    QCoreApplication::sendEvent(timer.object, &event);

    // The handler may have killed the timer, and its number may be another one's by now.
    const auto survivor = m_timers.find(timerId);
    if (survivor != m_timers.end() && survivor->second.order == order)
    {
        survivor->second.isFiring = false;
    }
}

bool VirtualTime::hasDueTimer() const
{
    return std::any_of(m_timers.cbegin(), m_timers.cend(),
                       [this](const auto& entry) { return entry.second.due <= m_now; });
}

std::int64_t VirtualTime::nextDeadline() const
{
    std::int64_t next = kNever;
    for (const auto& [id, timer] : m_timers)
    {
        // A 0 ms timer is due in any pass: it gives no reason for one.
        if (timer.interval > 0 && !timer.isFiring)
        {
            next = std::min(next, timer.due);
        }
    }
    return next;
}

void VirtualTime::registerTimer(int timerId, int interval, Qt::TimerType timerType, QObject* object)
{
    m_timers[timerId] =
        Timer{object, interval, timerType, m_now + interval, ++m_startedTimers, false};
}

bool VirtualTime::unregisterTimer(int timerId)
{
    return m_timers.erase(timerId) != 0;
}

bool VirtualTime::unregisterTimers(QObject* object)
{
    const std::size_t before = m_timers.size();
    for (auto timer = m_timers.begin(); timer != m_timers.end();)
    {
        timer = timer->second.object == object ? m_timers.erase(timer) : std::next(timer);
    }
    return m_timers.size() != before;
}

QList<QAbstractEventDispatcher::TimerInfo> VirtualTime::registeredTimers(QObject* object) const
{
    QList<TimerInfo> timers;
    for (const auto& [id, timer] : m_timers)
    {
        if (timer.object == object)
        {
            timers.append(TimerInfo(id, timer.interval, timer.type));
        }
    }
    return timers;
}

int VirtualTime::remainingTime(int timerId)
{
    const auto timer = m_timers.find(timerId);
    if (timer == m_timers.end())
    {
        return -1;
    }
    return static_cast<int>(std::max<std::int64_t>(0, timer->second.due - m_now));
}

void VirtualTime::registerSocketNotifier(QSocketNotifier* notifier)
{
    m_notifiers.push_back(notifier);
}

void VirtualTime::unregisterSocketNotifier(QSocketNotifier* notifier)
{
    m_notifiers.remove(notifier);
}

void VirtualTime::wakeUp()
{
    (void)eventfd_write(m_wakeUpEvent, 1);
}

void VirtualTime::interrupt()
{
    wakeUp();
}

} // namespace orvo::test
