#pragma once

#include <QAbstractEventDispatcher>

#include <map>
#include <vector>

namespace orvo::model
{

/// An event dispatcher in which nothing happens by itself: a timer fires when it is told to.
///
/// Threads: the main thread; wakeUp() from any, without effect.
class HandTime final : public QAbstractEventDispatcher
{
public:
    /// To be called once, before the application object is made.
    static void install();
    /// The one of this program; it must have been installed.
    static HandTime& instance();

    struct Timer
    {
        int id;
        int intervalMs;
        QObject* object;
    };
    /// The timers that run, in the order in which they were started.
    [[nodiscard]] std::vector<Timer> timers() const;
    void fire(const Timer& timer);

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    bool hasPendingEvents() override { return false; }
    void registerSocketNotifier(QSocketNotifier* /*notifier*/) override {}
    void unregisterSocketNotifier(QSocketNotifier* /*notifier*/) override {}
    void registerTimer(int timerId, int interval, Qt::TimerType timerType,
                       QObject* object) override;
    bool unregisterTimer(int timerId) override;
    bool unregisterTimers(QObject* object) override;
    [[nodiscard]] QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int /*timerId*/) override { return 0; }
    void wakeUp() override {}
    void interrupt() override {}
    void flush() override {}

private:
    HandTime() = default;

    struct Registration
    {
        int intervalMs;
        Qt::TimerType type;
        QObject* object;
        unsigned order;
    };
    std::map<int, Registration> m_timers;
    unsigned m_started{0};
};

} // namespace orvo::model
