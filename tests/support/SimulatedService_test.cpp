#include "SimulatedService.h"

#include "BusDaemon.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace orvo::test
{

namespace
{

const QString kName = QStringLiteral("com.orvo.pictor");

QDBusMessage ping(int timeoutMs = 5000)
{
    const QDBusMessage call =
        QDBusMessage::createMethodCall(kName, QStringLiteral("/"), kName, QStringLiteral("doPing"));
    return QDBusConnection::systemBus().call(call, QDBus::Block, timeoutMs);
}

bool isOnTheBus()
{
    return QDBusConnection::systemBus().interface()->isServiceRegistered(kName);
}

} // namespace

TEST(SimulatedService, AnswersUpWithoutOrders)
{
    const SimulatedService pictor(kName);
    const QDBusMessage answer = ping();
    EXPECT_EQ(QDBusMessage::ReplyMessage, answer.type());
    EXPECT_EQ(QStringLiteral("(is)s"), answer.signature());
    EXPECT_EQ(QStringLiteral("up"), answer.arguments().value(1).toString());
    EXPECT_EQ(1, pictor.pings());
}

TEST(SimulatedService, AnswersWhatItIsTold)
{
    SimulatedService pictor(kName);
    pictor.answers(QStringLiteral("starting"));
    EXPECT_EQ(QStringLiteral("starting"), ping().arguments().value(1).toString());
    pictor.answersWith({1, 2, 3});
    EXPECT_EQ(QStringLiteral("iii"), ping().signature());
    pictor.answersWithError(QStringLiteral("com.orvo.Error.Test"));
    EXPECT_EQ(QStringLiteral("com.orvo.Error.Test"), ping().errorName());
}

TEST(SimulatedService, KeepsSilentAndCountsThePingAllTheSame)
{
    SimulatedService pictor(kName);
    pictor.staysSilent();
    EXPECT_EQ(QDBusMessage::ErrorMessage, ping(50).type());
    EXPECT_EQ(1, pictor.pings());
}

TEST(SimulatedService, AnswersLate)
{
    SimulatedService pictor(kName);
    pictor.answersAfter(200);
    EXPECT_EQ(QDBusMessage::ErrorMessage, ping(50).type());
    EXPECT_EQ(QDBusMessage::ReplyMessage, ping(5000).type());
}

TEST(SimulatedService, IsOnTheBusUntilItLeavesOrEnds)
{
    {
        SimulatedService pictor(kName);
        EXPECT_TRUE(isOnTheBus());
        pictor.leavesTheBus();
        EXPECT_FALSE(isOnTheBus());
        pictor.returnsToTheBus();
        EXPECT_TRUE(isOnTheBus());
    }
    EXPECT_FALSE(isOnTheBus());
}

} // namespace orvo::test
