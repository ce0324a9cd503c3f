#include "ServicePeer.h"

#include "Files.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace orvo::test
{

using testing::ElementsAre;

namespace
{
QString textIn(const QVariant& value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
    {
        return value.value<QDBusVariant>().variant().toString();
    }
    if (value.userType() == qMetaTypeId<QDBusArgument>())
    {
        QString text;
        const auto argument = value.value<QDBusArgument>();
        argument.beginStructure();
        argument >> text;
        argument.endStructure();
        return text;
    }
    return value.toString();
}

int statusCodeIn(const QVariant& value)
{
    int code = -1;
    const auto argument = value.value<QDBusArgument>();
    argument.beginStructure();
    argument >> code;
    argument.endStructure();
    return code;
}
} // namespace

class SimulatedServiceOrders : public testing::Test
{
protected:
    SimulatedServiceOrders() { m_service.startAndAwaitName(); }

    ServicePeer m_service{"pictor", QStringLiteral("com.orvo.pictor")};
};

struct ReplyRow
{
    const char* name;
    const char* order;
    const char* signature;
    const char* second;
};

void PrintTo(const ReplyRow& row, std::ostream* stream)
{
    *stream << row.order;
}

class SimulatedServiceReply : public SimulatedServiceOrders,
                              public testing::WithParamInterface<ReplyRow>
{
};

TEST_P(SimulatedServiceReply, HasTheOrderedForm)
{
    m_service.order(GetParam().order);
    const QDBusMessage reply = m_service.ping();
    ASSERT_EQ(QDBusMessage::ReplyMessage, reply.type()) << qPrintable(reply.errorMessage());
    EXPECT_STREQ(GetParam().signature, qPrintable(reply.signature()));
    EXPECT_STREQ(GetParam().second, qPrintable(textIn(reply.arguments().value(1))));
    if (reply.signature().startsWith(QLatin1String("(is)")))
    {
        EXPECT_EQ(0, statusCodeIn(reply.arguments().constFirst()));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Orders, SimulatedServiceReply,
    testing::Values(ReplyRow{"Up", "up\n", "(is)s", "up"},
                    ReplyRow{"Starting", "starting\n", "(is)s", "starting"},
                    ReplyRow{"Down", "down\n", "(is)s", "down"},
                    ReplyRow{"WithoutLineFeed", "down", "(is)s", "down"},
                    ReplyRow{"WithBlanks", "  down \r\n", "(is)s", "down"},
                    ReplyRow{"EmptyFile", "", "(is)s", "up"},
                    ReplyRow{"EmptyLinesOnly", "\n \n", "(is)s", "up"},
                    ReplyRow{"Delay", "delay 1", "(is)s", "up"},
                    ReplyRow{"DelayWithLevel", "delay 0 starting", "(is)s", "starting"},
                    ReplyRow{"Garbage", "garbage", "", ""},
                    ReplyRow{"GarbageNone", "garbage none", "", ""},
                    ReplyRow{"GarbageOne", "garbage one", "(is)", ""},
                    ReplyRow{"GarbageThree", "garbage three", "(is)ss", "up"},
                    ReplyRow{"GarbageInt", "garbage int", "(is)i", "5"},
                    ReplyRow{"GarbageVariant", "garbage variant", "(is)v", "up"},
                    ReplyRow{"GarbageStruct", "garbage struct", "(is)(s)", "up"}),
    [](const auto& row) { return row.param.name; });

TEST_F(SimulatedServiceOrders, SwapPutsTheRunLevelFirst)
{
    m_service.order("garbage swap");
    const QDBusMessage reply = m_service.ping();
    EXPECT_STREQ("s(is)", qPrintable(reply.signature()));
    EXPECT_EQ(QStringLiteral("up"), reply.arguments().constFirst().toString());
    EXPECT_EQ(0, statusCodeIn(reply.arguments().value(1)));
}

TEST_F(SimulatedServiceOrders, HugeIsARunLevelOfOneMebibyte)
{
    m_service.order("garbage huge");
    EXPECT_EQ(1024 * 1024, m_service.pingedLevel().size());
}

TEST_F(SimulatedServiceOrders, GiantIsARunLevelOfTenMebibytes)
{
    m_service.order("garbage giant");
    EXPECT_EQ(10 * 1024 * 1024, m_service.pingedLevel().size());
}

TEST_F(SimulatedServiceOrders, MissingFileMeansUp)
{
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
    m_service.order("down");
    EXPECT_EQ(QStringLiteral("down"), m_service.pingedLevel());
    m_service.orderNothing();
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
}

TEST_F(SimulatedServiceOrders, LinesAreForOnePingEachAndTheLastRepeats)
{
    m_service.order("starting\n\ndown\nup\n");
    QStringList levels;
    for (int ping = 0; ping < 4; ++ping)
    {
        levels << m_service.pingedLevel();
    }
    EXPECT_EQ(QStringLiteral("starting down up up"), levels.join(QLatin1Char(' ')));
}

TEST_F(SimulatedServiceOrders, ReplacedFileStartsAtItsFirstLineEvenWithTheSameText)
{
    m_service.order("starting\ndown\n");
    EXPECT_EQ(QStringLiteral("starting"), m_service.pingedLevel());
    EXPECT_EQ(QStringLiteral("down"), m_service.pingedLevel());
    m_service.order("starting\ndown\n");
    EXPECT_EQ(QStringLiteral("starting"), m_service.pingedLevel());
}

TEST_F(SimulatedServiceOrders, DelayHoldsTheReplyBack)
{
    constexpr int kDelayMs = 300;
    m_service.order("delay 300");
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
    EXPECT_GE(clock.elapsed(), kDelayMs);
}

TEST_F(SimulatedServiceOrders, DelayedReplyDoesNotHoldBackTheNextOne)
{
    m_service.order("delay 5000\ndown\n");
    const QDBusPendingCall slow = m_service.bus().asyncCall(QDBusMessage::createMethodCall(
        QStringLiteral("com.orvo.pictor"), QStringLiteral("/"), QStringLiteral("com.orvo.pictor"),
        QStringLiteral("doPing")));
    EXPECT_EQ(QStringLiteral("down"), m_service.pingedLevel());
    EXPECT_FALSE(slow.isFinished());
}

TEST_F(SimulatedServiceOrders, ErrorIsABusError)
{
    m_service.order("error");
    const QDBusMessage reply = m_service.ping();
    EXPECT_EQ(QStringLiteral("com.orvo.pictor.Failed"), reply.errorName());
    EXPECT_EQ(QStringLiteral("ordered to fail"), reply.errorMessage());
}

TEST_F(SimulatedServiceOrders, HangAnswersNothingAndTheServiceLivesOn)
{
    constexpr int kPatienceMs = 200;
    m_service.order("hang");
    EXPECT_EQ(QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
              m_service.ping(kPatienceMs).errorName());
    m_service.order("up");
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
}

TEST_F(SimulatedServiceOrders, CrashEndsTheProcessByASignal)
{
    m_service.order("crash");
    EXPECT_EQ(QDBusMessage::ErrorMessage, m_service.ping().type());
    ASSERT_TRUE(m_service.process().waitForEnd(10000));
    EXPECT_EQ(128 + SIGABRT, m_service.process().exitStatus());
    EXPECT_TRUE(m_service.awaitNameGone());
    EXPECT_THAT(pingJournal(), ElementsAre("pictor crash"));
}

class SimulatedServiceMistake : public SimulatedServiceOrders,
                                public testing::WithParamInterface<const char*>
{
};

TEST_P(SimulatedServiceMistake, IsRefusedWithTheRightWords)
{
    const std::string text =
        std::string("unknown order '") + GetParam() +
        "'; give one of: up, starting, down, delay MS [LEVEL], error, hang, crash, garbage "
        "[none|one|three|int|variant|swap|struct|huge|giant]";
    m_service.order(GetParam());
    EXPECT_STREQ(text.c_str(), qPrintable(m_service.ping().errorMessage()));
    EXPECT_THAT(m_service.output(), ElementsAre("pictor: " + text));
}

INSTANTIATE_TEST_SUITE_P(Orders, SimulatedServiceMistake,
                         testing::Values("upp", "delay", "delay soon", "delay -1 up",
                                         "garbage much"));

TEST_F(SimulatedServiceOrders, PingJournalHasALineForEachPing)
{
    m_service.order("up\ndelay 1 down\nerror\n");
    for (int ping = 0; ping < 3; ++ping)
    {
        (void)m_service.ping();
    }
    EXPECT_THAT(pingJournal(), ElementsAre("pictor up", "pictor delay", "pictor error"));
    EXPECT_THAT(linesOf("/log/pings").front(),
                testing::MatchesRegex("[0-9]+\\.[0-9]{6} pictor up"));
}

} // namespace orvo::test
