#include "SupervisorOnTheBus.h"

#include "ProcessTables.h"
#include "SuprSM.h"
#include "SuprSMSystem.h"
#include "SuprState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTimer>

#include <climits>

namespace orvo
{

namespace
{

using testing::Contains;
using testing::Not;

constexpr int kNeverInThisTest = 600000;

/// A service under supervision whose next ping is far away.
class PingTimerCommand : public test::SupervisorOnTheBus
{
protected:
    PingTimerCommand()
    {
        answers() = {};
        ServiceInfo::addService(
            m_name, ServiceInfo::makeService<test::StubService>(
                        QStringLiteral("pictor"), kNeverInThisTest, QString(), &answers()));
    }

    /// Outlives the service table.
    static test::StubService::Answers& answers()
    {
        static test::StubService::Answers one;
        return one;
    }

    void SetUp() override
    {
        SupervisorOnTheBus::SetUp();
        m_context = {m_supervisor.get(), &m_developerInfo, &m_action, &m_logger};
        m_system = std::make_unique<SuprSMSystem>(&m_context);
        m_machine = std::make_unique<SuprSM>(&m_context, m_system.get(), m_name);
    }

    void TearDown() override
    {
        m_machine.reset();
        m_system.reset();
        SupervisorOnTheBus::TearDown();
    }

    [[nodiscard]] std::string line(const char* format) const
    {
        return QString::fromLatin1(format).arg(m_name).toStdString();
    }

    QString m_name{test::freshBusName()};
    ServiceInfo m_developerInfo{&m_logger, true};
    ServiceAction m_action{&m_developerInfo, &m_logger};
    SupervisionContext m_context{};
    std::unique_ptr<SuprSMSystem> m_system;
    std::unique_ptr<SuprSM> m_machine;
};

} // namespace

TEST_F(PingTimerCommand, BringsTheNextPingForward)
{
    EXPECT_EQ(0, codeOf(call("setServicePingTimeoutOneShot", {m_name, 1})));
    EXPECT_TRUE(runUntil([] { return answers().pings > 0; }));
    EXPECT_THAT(m_device.lines(),
                Contains(line("TRACE setServicePingTimeoutOneShot: restartTimer(%1, 1)")));
    EXPECT_THAT(m_device.lines(), Not(Contains(testing::HasSubstr("failed"))));
}

TEST_F(PingTimerCommand, LeavesOtherServicesAlone)
{
    EXPECT_EQ(400004, codeOf(call("setServicePingTimeoutOneShot",
                                  {test::freshBusName(QStringLiteral("unknown")), 1})));
    EXPECT_EQ(0, answers().pings);
}

TEST_F(PingTimerCommand, IsRefusedWhenItWouldEndThePings)
{
    EXPECT_EQ(400004, codeOf(call("setServicePingTimeoutOneShot", {m_name, -1})));
    EXPECT_THAT(m_device.lines(),
                Contains(line("WARN setServicePingTimeoutOneShot: restartTimer(%1, -1) failed !")));
}

TEST_F(PingTimerCommand, LeavesTheTimerAsItWasWhenItIsRefused)
{
    const QTimer* timer = g_activeStates.at(m_name)->findChild<QTimer*>();
    EXPECT_EQ(400004, codeOf(call("setServicePingTimeoutOneShot", {m_name, INT_MIN})));
    EXPECT_EQ(kNeverInThisTest, timer->interval());
    EXPECT_LT(0, timer->remainingTime());
}

TEST_F(PingTimerCommand, TakesZeroForAPingAtOnce)
{
    EXPECT_EQ(0, codeOf(call("setServicePingTimeoutOneShot", {m_name, 0})));
    EXPECT_TRUE(runUntil([] { return answers().pings > 0; }));
}

TEST_F(PingTimerCommand, IsToldToTheMachineWhenTheNameAppears)
{
    m_supervisor->serviceRegistered(m_name);
    EXPECT_THAT(m_device.lines(), Contains(line("TRACE SuprStarting::registered (%1)")));
}

} // namespace orvo
