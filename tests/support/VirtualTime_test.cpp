#include "VirtualTime.h"

#include "VirtualClock.h"

#include <QDateTime>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace orvo::test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kBoundMs = 10000;

class VirtualTimeOfAProgram : public testing::Test
{
protected:
    /// A repeating timer that notes the moment, relative to the test's begin, of each firing.
    std::unique_ptr<QTimer> startTimer(int intervalMs, const std::function<void()>& deed = {})
    {
        auto timer = std::make_unique<QTimer>();
        QObject::connect(timer.get(), &QTimer::timeout,
                         [this, deed]
                         {
                             m_fired.push_back(m_time.now() - m_begin);
                             if (deed)
                             {
                                 deed();
                             }
                         });
        timer->start(intervalMs);
        return timer;
    }

    VirtualTime& m_time{VirtualTime::instance()};
    std::int64_t m_begin{m_time.now()};
    std::vector<std::int64_t> m_fired;
};

/// Deletes itself in its own timer's slot, as the states do.
class Ephemeral : public QObject
{
public:
    explicit Ephemeral(bool* isGone) : m_isGone(isGone)
    {
        connect(&m_timer, &QTimer::timeout, this, [this] { delete this; });
        m_timer.start(1000);
    }
    ~Ephemeral() override { *m_isGone = true; }
    Ephemeral(const Ephemeral&) = delete;
    Ephemeral& operator=(const Ephemeral&) = delete;

private:
    bool* m_isGone;
    QTimer m_timer;
};

} // namespace

TEST_F(VirtualTimeOfAProgram, StandsStillUntilItIsAdvanced)
{
    const auto timer = startTimer(1);
    EXPECT_FALSE(m_time.waitFor([this] { return !m_fired.empty(); }, 50));
}

TEST_F(VirtualTimeOfAProgram, FiresATimerAtItsExactMillisecondAndNotBefore)
{
    const auto timer = startTimer(1000);
    m_time.advance(999);
    EXPECT_THAT(m_fired, IsEmpty());
    m_time.advance(1);
    EXPECT_THAT(m_fired, ElementsAre(1000));
}

TEST_F(VirtualTimeOfAProgram, FiresARepeatingTimerAtEachOfItsPeriods)
{
    const auto timer = startTimer(2200);
    m_time.advance(7000);
    EXPECT_THAT(m_fired, ElementsAre(2200, 4400, 6600));
}

TEST_F(VirtualTimeOfAProgram, FiresASingleShotOnce)
{
    const auto timer = startTimer(10);
    timer->setSingleShot(true);
    m_time.advance(100);
    EXPECT_THAT(m_fired, ElementsAre(10));
}

TEST_F(VirtualTimeOfAProgram, FiresTimersInTheOrderOfTheirDueTimes)
{
    const auto slow = startTimer(300);
    const auto fast = startTimer(200);
    m_time.advance(600);
    EXPECT_THAT(m_fired, ElementsAre(200, 300, 400, 600, 600));
}

TEST_F(VirtualTimeOfAProgram, FiresTimersDueAtTheSameMomentInTheOrderOfTheirStarts)
{
    std::string order;
    const auto first = startTimer(1000, [&order] { order += 'a'; });
    const auto second = startTimer(1000, [&order] { order += 'b'; });
    m_time.advance(2000);
    EXPECT_EQ("abab", order);
}

TEST_F(VirtualTimeOfAProgram, FiresAZeroTimerOncePerPass)
{
    const auto timer = startTimer(0);
    m_time.advance(0);
    EXPECT_EQ(1U, m_fired.size());
    m_time.advance(1000);
    EXPECT_EQ(2U, m_fired.size());
}

TEST_F(VirtualTimeOfAProgram, IsNotHeldUpByAZeroTimer)
{
    const auto zero = startTimer(0);
    const auto second = startTimer(1000);
    m_time.advance(2000);
    EXPECT_THAT(m_fired, ElementsAre(1000, 1000, 2000, 2000));
}

TEST_F(VirtualTimeOfAProgram, NeverFiresATimerThatWasStopped)
{
    const auto second = startTimer(1000);
    const auto stopper = startTimer(500, [&second] { second->stop(); });
    m_time.advance(1000);
    EXPECT_THAT(m_fired, ElementsAre(500, 1000));
}

TEST_F(VirtualTimeOfAProgram, NeverFiresATimerThatAnotherOneStoppedInTheSamePass)
{
    std::unique_ptr<QTimer> second;
    const auto first = startTimer(1000, [&second] { second->stop(); });
    second = startTimer(1000);
    m_time.advance(1000);
    EXPECT_EQ(1U, m_fired.size());
}

TEST_F(VirtualTimeOfAProgram, StartsARestartedTimerAnewFromThatMoment)
{
    const auto timer = startTimer(1000);
    m_time.advance(600);
    timer->start(1000);
    m_time.advance(2000);
    EXPECT_THAT(m_fired, ElementsAre(1600, 2600));
}

TEST_F(VirtualTimeOfAProgram, FiresATimerThatWasHeldUpOnceAndInItsNewPhase)
{
    const auto busy = startTimer(1000,
                                 [this]
                                 {
                                     if (m_fired.size() == 1)
                                     {
                                         m_time.spend(3500);
                                     }
                                 });
    m_time.advance(6000);
    EXPECT_THAT(m_fired, ElementsAre(1000, 4500, 5500));
}

TEST_F(VirtualTimeOfAProgram, SurvivesAnObjectThatIsDeletedInItsOwnTimerSlot)
{
    bool isGone = false;
    new Ephemeral(&isGone); // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): deletes itself
    m_time.advance(999);
    EXPECT_FALSE(isGone);
    m_time.advance(1);
    EXPECT_TRUE(isGone);
    m_time.advance(5000);
}

TEST_F(VirtualTimeOfAProgram, TellsTheRemainingTimeOfATimer)
{
    const auto timer = startTimer(1000);
    m_time.advance(400);
    EXPECT_EQ(600, timer->remainingTime());
}

TEST_F(VirtualTimeOfAProgram, ListsTheTimersOfAnObject)
{
    const auto timer = startTimer(1234);
    ASSERT_EQ(1, m_time.registeredTimers(timer.get()).size());
    EXPECT_EQ(1234, m_time.registeredTimers(timer.get()).first().interval);
}

TEST_F(VirtualTimeOfAProgram, MovesTheWallClockAlong)
{
    const QDateTime before = QDateTime::currentDateTime();
    m_time.advance(300000);
    EXPECT_EQ(300000, before.msecsTo(QDateTime::currentDateTime()));
}

TEST_F(VirtualTimeOfAProgram, ShowsAHandlerTheMomentAtWhichItsTimerIsDue)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    qint64 seen = 0;
    const auto timer = startTimer(700, [&seen] { seen = QDateTime::currentMSecsSinceEpoch(); });
    m_time.advance(1000);
    EXPECT_EQ(before + 700, seen);
}

TEST_F(VirtualTimeOfAProgram, LetsTheWallClockBeSetForthAndBackWithoutAnEffectOnTimers)
{
    const auto timer = startTimer(1000);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    VirtualClock::step(3600000);
    EXPECT_EQ(before + 3600000, QDateTime::currentMSecsSinceEpoch());
    VirtualClock::step(-7200000);
    EXPECT_EQ(before - 3600000, QDateTime::currentMSecsSinceEpoch());
    m_time.advance(1000);
    EXPECT_THAT(m_fired, ElementsAre(1000));
    VirtualClock::step(3600000);
}

TEST_F(VirtualTimeOfAProgram, DeliversPostedEventsInTheNextPass)
{
    QTimer timer;
    QMetaObject::invokeMethod(&timer, "start", Qt::QueuedConnection, Q_ARG(int, 1));
    EXPECT_FALSE(timer.isActive());
    m_time.advance(0);
    EXPECT_TRUE(timer.isActive());
}

TEST_F(VirtualTimeOfAProgram, IsWokenUpByAnotherThread)
{
    QEventLoop loop;
    std::thread other([&loop] { QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection); });
    EXPECT_EQ(0, loop.exec());
    other.join();
}

TEST_F(VirtualTimeOfAProgram, LetsABlockingWaitForAProcessEnd)
{
    QProcess process;
    process.start(QStringLiteral("sh"),
                  {QStringLiteral("-c"), QStringLiteral("echo text; exit 3")});
    ASSERT_TRUE(process.waitForFinished(kBoundMs));
    EXPECT_EQ(3, process.exitCode());
    EXPECT_EQ("text\n", process.readAllStandardOutput().toStdString());
    EXPECT_EQ(m_begin, m_time.now());
}

TEST_F(VirtualTimeOfAProgram, TellsAboutAProcessThatEndedInTheBackground)
{
    QProcess process;
    process.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("exit 4")});
    EXPECT_TRUE(
        m_time.waitFor([&process] { return process.state() == QProcess::NotRunning; }, kBoundMs));
    EXPECT_EQ(4, process.exitCode());
}

TEST_F(VirtualTimeOfAProgram, LetsAnEventLoopBeRunAndQuit)
{
    QEventLoop loop;
    const auto quitter = startTimer(0, [&loop] { loop.exit(5); });
    EXPECT_EQ(5, loop.exec());
}

} // namespace orvo::test
