#pragma once

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>

#include <cstdint>
#include <list>
#include <map>

#include <poll.h>

namespace orvo::test
{

/// The event dispatcher of a test program in which time passes only when the test says so: every
/// QTimer fires at its exact virtual millisecond, and an hour of supervision takes as long as its
/// handlers do. Posted events, socket notifiers, blocking bus calls, the bus watcher and
/// QProcess::waitForFinished work as ever, in real time, while virtual time stands still.
///
/// Shape:   one pass = posted events, then ready sockets, then each timer that is due, once, in the
///          order of due time, then of (re)starting. A 0 ms timer is due in every pass.
/// Units:   virtual ms since the dispatcher was made.
/// Owns:    its wake-up descriptor; belongs to the application object itself.
/// Threads: the main thread; wakeUp() from any.
/// Errors:  a repeating timer that was held up fires once, late, and keeps its new phase, as in Qt.
class VirtualTime final : public QAbstractEventDispatcher
{
public:
    /// To be called once, before the application object is made. Also stops the program's wall
    /// clock (VirtualClock) at kPowerOn.
    static void install();

    ~VirtualTime() override;
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    /// 2020-06-01 12:00:00 UTC.
    static constexpr std::int64_t kPowerOn = 1591012800000;

    /// The one of this program; it must have been installed.
    static VirtualTime& instance();

    [[nodiscard]] std::int64_t now() const { return m_now; }

    /// Lets time pass: one pass at each moment at which a timer is due, and one at the end.
    /// advance(0) is one pass.
    void advance(std::int64_t ms);

    /// To be called by what runs inside a pass: it took this long, and no timer fired meanwhile.
    void spend(std::int64_t ms);

    /// Runs passes while virtual time stands still until condition() holds, at most boundMs of real
    /// time; the last answer of the condition. For what real peers send.
    template <typename Condition>
    bool waitFor(Condition condition, int boundMs = 10000)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        while (!condition())
        {
            if (elapsed.hasExpired(boundMs))
            {
                return false;
            }
            pass(kPollMs);
        }
        return true;
    }

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    bool hasPendingEvents() override;
    void registerSocketNotifier(QSocketNotifier* notifier) override;
    void unregisterSocketNotifier(QSocketNotifier* notifier) override;
    void registerTimer(int timerId, int interval, Qt::TimerType timerType,
                       QObject* object) override;
    bool unregisterTimer(int timerId) override;
    bool unregisterTimers(QObject* object) override;
    [[nodiscard]] QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int timerId) override;
    void wakeUp() override;
    void interrupt() override;
    void flush() override {}

private:
    static constexpr int kPollMs = 2;

    VirtualTime();

    struct Timer
    {
        QObject* object;
        int interval;
        Qt::TimerType type;
        std::int64_t due;
        std::uint64_t order; // of starting, among timers due at the same moment
        bool isFiring;
    };

    bool pass(int waitMs);
    bool serveSockets(int waitMs);
    bool fireTimers();
    void fire(int timerId, Timer& timer);
    void moveTo(std::int64_t now);
    [[nodiscard]] bool hasDueTimer() const;
    [[nodiscard]] std::int64_t nextDeadline() const;

    int m_wakeUpEvent;
    std::int64_t m_now{0};
    std::uint64_t m_startedTimers{0};
    std::map<int, Timer> m_timers;
    std::list<QSocketNotifier*> m_notifiers;
};

} // namespace orvo::test
