#include "DbusCmd.h"
#include "ServiceInfo.h"

#include "LoggedDevice.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

namespace orvo
{

namespace
{

/// A device whose system bus does not run; the box has none.
class WithoutABus : public testing::Test
{
protected:
    int m_argc{0};
    QCoreApplication m_application{m_argc, nullptr};
    test::LoggedDevice m_device;
    Logger::RedisLogger m_logger{"wardex", Logger::kLogSocket, Logger::kLogList, true};
    ServiceInfo m_info{&m_logger, false};
    DbusCmd m_supervisor{&m_info, &m_logger};
};

} // namespace

TEST_F(WithoutABus, TheSupervisorReportsBothRegistrationsAndRunsOn)
{
    EXPECT_THAT(m_device.lines(),
                testing::ElementsAre("ERROR Could not register DBus service com.orvo.wardex",
                                     "ERROR Could not register DBus object"));
    m_supervisor.publishAvailability({});
    QString runLevel;
    EXPECT_EQ(0, m_supervisor.doPing(runLevel).code);
    EXPECT_EQ("up", runLevel);
}

} // namespace orvo
