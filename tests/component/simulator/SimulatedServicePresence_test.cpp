#include "BusDaemon.h"
#include "Eventually.h"
#include "Files.h"
#include "ServicePeer.h"

#include <QDBusConnectionInterface>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

namespace orvo::test
{

using testing::ElementsAre;

struct IdentityRow
{
    const char* shortName;
    const char* busName;
};

void PrintTo(const IdentityRow& row, std::ostream* stream)
{
    *stream << row.shortName;
}

class SimulatedServiceIdentity : public testing::TestWithParam<IdentityRow>
{
protected:
    ServicePeer m_service{GetParam().shortName, QString::fromLatin1(GetParam().busName)};
};

TEST_P(SimulatedServiceIdentity, FollowsTheNameOfTheExecutedFile)
{
    m_service.startAndAwaitName();
    EXPECT_EQ(static_cast<unsigned>(m_service.process().pid()), m_service.ownerPid());
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
    EXPECT_THAT(pingJournal(), ElementsAre(std::string(GetParam().shortName) + " up"));

    ChildProcess list({"ps", "-p", std::to_string(m_service.process().pid()), "-o", "comm="},
                      "/tmp/list");
    ASSERT_TRUE(list.waitForEnd(10000));
    EXPECT_THAT(linesOf("/tmp/list"), ElementsAre(GetParam().shortName));
}

INSTANTIATE_TEST_SUITE_P(Services, SimulatedServiceIdentity,
                         testing::Values(IdentityRow{"pictor", "com.orvo.pictor"},
                                         IdentityRow{"corvane", "com.orvo.vistor"},
                                         IdentityRow{"wirl", "com.orvo.wirl"}),
                         [](const auto& row) { return row.param.shortName; });

class SimulatedServicePresence : public testing::Test
{
protected:
    ServicePeer m_service{"wirl", QStringLiteral("com.orvo.wirl")};
};

TEST_F(SimulatedServicePresence, DescribesItsPing)
{
    m_service.startAndAwaitName();
    const QString description = m_service
                                    .call(QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                          QStringLiteral("Introspect"))
                                    .arguments()
                                    .constFirst()
                                    .toString();
    EXPECT_TRUE(description.contains(QStringLiteral("<interface name=\"com.orvo.wirl\">")));
    EXPECT_TRUE(description.contains(QStringLiteral("<method name=\"doPing\">")));
    EXPECT_TRUE(description.contains(QStringLiteral("<arg type=\"(is)\" direction=\"out\"/>")));
    EXPECT_TRUE(description.contains(
        QStringLiteral("<arg name=\"runlevel\" type=\"s\" direction=\"out\"/>")));
}

TEST_F(SimulatedServicePresence, KnowsNoOtherMethodAndNoOtherInterface)
{
    m_service.startAndAwaitName();
    const QDBusMessage reply =
        m_service.call(QStringLiteral("com.orvo.wirl"), QStringLiteral("doReset"));
    EXPECT_STREQ("org.freedesktop.DBus.Error.UnknownMethod", qPrintable(reply.errorName()));
    EXPECT_STREQ("com.orvo.wirl has only doPing here", qPrintable(reply.errorMessage()));
    EXPECT_EQ(QDBusMessage::ErrorMessage,
              m_service.call(QStringLiteral("com.orvo.pictor"), QStringLiteral("doPing")).type());
    EXPECT_EQ(QStringLiteral("up"),
              m_service.call(QString(), QStringLiteral("doPing")).arguments().value(1).toString());
}

TEST_F(SimulatedServicePresence, EndsOnSigtermEvenWithAPingUnanswered)
{
    m_service.startAndAwaitName();
    m_service.order("hang");
    (void)m_service.ping(50);
    m_service.process().signal(SIGTERM);
    ASSERT_TRUE(m_service.process().waitForEnd(5000));
    EXPECT_EQ(0, m_service.process().exitStatus());
    EXPECT_TRUE(m_service.awaitNameGone());
}

TEST_F(SimulatedServicePresence, WaitsForAnOldInstanceToLeave)
{
    m_service.startAndAwaitName();
    const std::string program = "/opt/orvo/bin/wirl";
    ChildProcess successor({program}, "/tmp/successor");
    // Three connections: the test's, the old instance's and the successor's, which is refused now.
    ASSERT_TRUE(eventually(
        [&]
        {
            const QStringList names = m_service.bus().interface()->registeredServiceNames().value();
            return names.filter(QStringLiteral(":1.")).size() >= 3;
        }));
    m_service.process().signal(SIGTERM);
    const auto expected = static_cast<unsigned>(successor.pid());
    EXPECT_TRUE(eventually([&] { return m_service.ownerPid() == expected; }));
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
    EXPECT_THAT(linesOf("/tmp/successor"), testing::IsEmpty());
}

TEST_F(SimulatedServicePresence, EndsWhenTheBusDies)
{
    m_service.startAndAwaitName();
    BusDaemon::ofThisProcess().crash();
    EXPECT_TRUE(m_service.process().waitForEnd(5000));
    EXPECT_EQ(1, m_service.process().exitStatus());
    EXPECT_THAT(m_service.output(),
                ElementsAre("wirl: the system bus has gone, nobody can ping any more"));
    BusDaemon::ofThisProcess().restart();
}

TEST_F(SimulatedServicePresence, EndsWithoutABus)
{
    ChildProcess service({"env", "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/none", "/opt/orvo/bin/wirl"},
                         "/tmp/busless");
    ASSERT_TRUE(service.waitForEnd(5000));
    EXPECT_EQ(1, service.exitStatus());
    EXPECT_THAT(linesOf("/tmp/busless"),
                ElementsAre(testing::StartsWith("wirl: cannot reach the system bus: ")));
}

TEST_F(SimulatedServicePresence, AnswersWithoutItsJournalToo)
{
    std::filesystem::remove("/log/pings");
    std::filesystem::create_directory("/log/pings");
    m_service.startAndAwaitName();
    EXPECT_EQ(QStringLiteral("up"), m_service.pingedLevel());
    EXPECT_THAT(m_service.output(),
                ElementsAre("wirl: cannot open the journal /log/pings: Is a directory; create its "
                            "folder and make it writable"));
    std::filesystem::remove("/log/pings");
}

} // namespace orvo::test
