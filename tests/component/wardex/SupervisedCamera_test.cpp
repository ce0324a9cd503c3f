// Both kinds of machine together, as start-up builds them, from power-on.

#include "SupervisedDevice.h"

#include "SignalListener.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using testing::ElementsAre;
using testing::IsEmpty;

class SupervisedCamera : public testing::Test
{
protected:
    void SetUp() override
    {
        m_device.supervise(kVistor);
        m_device.supervise(kPictor);
    }

    void letMs(int ms) { VirtualTime::instance().advance(ms); }

    StubService::Answers& pictor() { return m_device.service(kPictor); }
    StubService::Answers& vistor() { return m_device.service(kVistor); }

    SupervisedDevice m_device{Mode::Field};
};

/// Both services up, 3 s after power-on.
class StableCamera : public SupervisedCamera
{
protected:
    void SetUp() override
    {
        SupervisedCamera::SetUp();
        letMs(3000);
        ASSERT_EQ("SuprStableSystem", m_device.state());
        m_device.forgetThePast();
    }
};

} // namespace

TEST_F(SupervisedCamera, BecomesStableWhenBothServicesAnswer)
{
    letMs(2199);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    letMs(1);
    EXPECT_EQ("SuprStableSystem", m_device.state());
    EXPECT_THAT(
        m_device.newRecords(),
        ElementsAre(
            "TRACE SuprStartingSystem::entry", "TRACE SuprStarting::entry (com.orvo.vistor)",
            "TRACE Ping interval of service com.orvo.vistor is 2200",
            "TRACE SuprStarting::entry (com.orvo.pictor)",
            "TRACE Ping interval of service com.orvo.pictor is 1000",
            "TRACE SuprStarting::up (com.orvo.pictor)",
            "TRACE SuprStarting::exit (com.orvo.pictor)", "TRACE SuprUp::entry (com.orvo.pictor)",
            "TRACE Ping interval of service com.orvo.pictor is 1000",
            "TRACE SuprStartingSystem::serviceIsUp com.orvo.pictor",
            "TRACE SuprStarting::up (com.orvo.vistor)",
            "TRACE SuprStarting::exit (com.orvo.vistor)", "TRACE SuprUp::entry (com.orvo.vistor)",
            "TRACE Ping interval of service com.orvo.vistor is 2200",
            "TRACE SuprStartingSystem::serviceIsUp com.orvo.vistor",
            "TRACE SuprStartingSystem::exit", "TRACE SuprStableSystem::entry"));
    EXPECT_THAT(m_device.newSignals(), ElementsAre("pictor=up vistor=down", "pictor=up vistor=up"));
}

TEST_F(SupervisedCamera, IsQuietWhileItWorks)
{
    letMs(3000);
    m_device.forgetThePast();
    letMs(24 * 3600 * 1000);
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
    EXPECT_THAT(m_device.newSignals(), IsEmpty());
    EXPECT_THAT(m_device.newCommands(), IsEmpty());
}

TEST_F(SupervisedCamera, RevivesAServiceThatNeverAnswers)
{
    pictor().fail();
    letMs(7000);
    EXPECT_EQ("SuprDown", SupervisedDevice::stateOf(kPictor));
    EXPECT_EQ("SuprUnstableSystem", m_device.state());
    letMs(1999);
    EXPECT_THAT(m_device.newCommands(), IsEmpty());
    letMs(1);
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/opt/orvo/etc/init.d/30_pictor restart"));
    EXPECT_EQ("SuprStarting", SupervisedDevice::stateOf(kPictor));
    pictor().answer("up");
    letMs(1000);
    EXPECT_EQ("SuprStableSystem", m_device.state());
}

TEST_F(SupervisedCamera, RestartsItsPackageAfterSeventeenSecondsWithoutAnAnswer)
{
    pictor().fail();
    vistor().fail();
    letMs(16999);
    const Lines before = m_device.newCommands();
    EXPECT_THAT(before, testing::Not(testing::Contains("/etc/init.d/mf-optware restart")));
    letMs(1);
    EXPECT_THAT(m_device.newCommands(), testing::Contains("/etc/init.d/mf-optware restart"));
}

TEST_F(StableCamera, LosesASilentServiceOnItsFourthMissedPing)
{
    pictor().fail();
    letMs(3999);
    EXPECT_EQ("SuprStableSystem", m_device.state());
    letMs(1);
    EXPECT_EQ("SuprUnstableSystem", m_device.state());
    EXPECT_THAT(
        m_device.newRecords(),
        ElementsAre("TRACE Ping com.orvo.pictor failed", "TRACE Ping com.orvo.pictor failed",
                    "TRACE Ping com.orvo.pictor failed", "TRACE Ping com.orvo.pictor failed",
                    "TRACE Ping threshold exceeded. Going down",
                    "TRACE SuprUp::down (com.orvo.pictor)", "TRACE SuprUp::exit (com.orvo.pictor)",
                    "TRACE SuprDown::entry (com.orvo.pictor)",
                    "TRACE Ping interval of service com.orvo.pictor is 1000",
                    "TRACE SuprStableSystem::serviceIsDown com.orvo.pictor",
                    "TRACE SuprStableSystem::exit", "TRACE SuprUnstableSystem::entry"));
    EXPECT_THAT(m_device.newSignals(), ElementsAre("pictor=down vistor=up"));
}

TEST_F(StableCamera, FindsAServiceSuspiciousThatStartsAgainWithoutHavingBeenDown)
{
    pictor().answer("starting");
    letMs(1000);
    EXPECT_EQ("SuprStableSystem", m_device.state());
    pictor().answer("up");
    letMs(1000);
    EXPECT_THAT(m_device.newRecords(),
                ElementsAre("TRACE System run level STARTING. Going starting",
                            "TRACE SuprUp::exit (com.orvo.pictor)",
                            "TRACE SuprStarting::entry (com.orvo.pictor)",
                            "TRACE Ping interval of service com.orvo.pictor is 1000",
                            "TRACE SuprStarting::up (com.orvo.pictor)",
                            "TRACE SuprStarting::exit (com.orvo.pictor)",
                            "TRACE SuprUp::entry (com.orvo.pictor)",
                            "TRACE Ping interval of service com.orvo.pictor is 1000",
                            "TRACE SuprStableSystem::serviceIsUp com.orvo.pictor",
                            "WARN SuprStableSystem::serviceIsUp: g_upServices == g_knownServices "
                            "is suspicious when adding com.orvo.pictor"));
    EXPECT_THAT(m_device.newSignals(), ElementsAre("pictor=up vistor=up"));
}

TEST_F(StableCamera, GoesOnTickingWhileEveryPingOfAServiceTimesOut)
{
    pictor().fail();
    pictor().onPing = []
    {
        VirtualTime::instance().spend(1000);
    };
    vistor().fail();
    vistor().onPing = []
    {
        VirtualTime::instance().spend(2200);
    };
    letMs(120 * 1000);
    const Lines commands = m_device.newCommands();
    EXPECT_LE(2, std::count(commands.begin(), commands.end(), "/etc/init.d/mf-optware restart"));
}

TEST_F(StableCamera, TellsTheBusWhichServicesAreUp)
{
    const QDBusConnection client =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, "claim");
    const SignalListener listener(client, "/", "com.orvo.wardex", "signalServiceAvailability");
    pictor().answer("down");
    letMs(1000);
    ASSERT_TRUE(VirtualTime::instance().waitFor([&] { return !listener.messages().empty(); }));
    const QDBusMessage& message = listener.messages().first();
    EXPECT_EQ("a{sv}", message.signature().toStdString());
    const QVariantMap expected{{kPictor, "down"}, {kVistor, "up"}};
    EXPECT_EQ(expected, qdbus_cast<QVariantMap>(message.arguments().first()));
    EXPECT_EQ(1, listener.messages().size());
}

} // namespace orvo::test
