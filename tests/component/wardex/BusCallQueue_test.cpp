#include "BusCallQueue.h"

#include "SupervisionLimits.h"

#include "Eventually.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

namespace orvo
{

namespace
{

/// Calls that wait; the answers go nowhere.
class WaitingCalls : public testing::Test
{
protected:
    bool add()
    {
        return m_queue.add(m_connection, m_call,
                           [this]
                           {
                               ++m_done;
                               return QVariantList();
                           });
    }

    bool runUntilDone(unsigned count)
    {
        return test::eventually(
            [this, count]
            {
                const unsigned before = m_done;
                QCoreApplication::processEvents();
                EXPECT_GE(before + 1, m_done) << "more than one in a pass of the loop";
                return m_done == count;
            });
    }

    QDBusConnection m_connection{QStringLiteral("nobody")};
    QDBusMessage m_call = QDBusMessage::createMethodCall(
        QStringLiteral("a.b"), QStringLiteral("/"), QStringLiteral("a.b"), QStringLiteral("c"));
    BusCallQueue m_queue{nullptr};
    unsigned m_done{0};
};

} // namespace

TEST_F(WaitingCalls, AreNotDoneAtOnce)
{
    EXPECT_TRUE(add());
    EXPECT_EQ(0U, m_done);
    EXPECT_TRUE(runUntilDone(1));
}

TEST_F(WaitingCalls, AreDoneOneForEachPassOfTheLoop)
{
    EXPECT_TRUE(add());
    EXPECT_TRUE(add());
    EXPECT_TRUE(add());
    EXPECT_TRUE(runUntilDone(3));
}

TEST_F(WaitingCalls, LetTimersComeInBetween)
{
    unsigned doneBefore = 0;
    for (std::size_t call = 0; call < kWaitingCallLimit; ++call)
    {
        EXPECT_TRUE(add());
    }
    QTimer::singleShot(0, [&] { doneBefore = m_done; });
    EXPECT_TRUE(runUntilDone(kWaitingCallLimit));
    EXPECT_GE(1U, doneBefore);
}

TEST_F(WaitingCalls, AreAsManyAsMayWaitAndNoMore)
{
    for (std::size_t call = 0; call < kWaitingCallLimit; ++call)
    {
        EXPECT_TRUE(add());
    }
    EXPECT_FALSE(add());
    EXPECT_TRUE(runUntilDone(kWaitingCallLimit));
    EXPECT_TRUE(add());
}

} // namespace orvo
