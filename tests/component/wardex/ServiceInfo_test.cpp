#include "ServiceInfo.h"

#include "LoggedDevice.h"
#include "StubService.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo
{

namespace
{

using test::freshBusName;
using test::StubService;
using testing::ElementsAre;
using testing::IsEmpty;

class ServiceRegistry : public testing::Test
{
protected:
    /// Enters a service under a fresh name.
    QString add(int pingTimeoutMs = 1000)
    {
        QString name = freshBusName();
        ServiceInfo::addService(name, service(pingTimeoutMs));
        return name;
    }

    ServiceInfo::ServicePtr service(int pingTimeoutMs = 1000)
    {
        return ServiceInfo::makeService<StubService>(QStringLiteral("pictor"), pingTimeoutMs,
                                                     QStringLiteral("/opt/30_pictor"), &answers());
    }

    /// Outlives the table's objects: those are destroyed when the process ends.
    static StubService::Answers& answers()
    {
        static auto* one = new StubService::Answers; // NOLINT: see above
        return *one;
    }

    void SetUp() override { answers() = {}; }

    test::LoggedDevice m_device;
    Logger::RedisLogger m_logger{"wardex", Logger::kLogSocket, Logger::kLogList, true};
    ServiceInfo m_info{&m_logger, false};
    ServiceInfo m_developerInfo{&m_logger, true};
    QString m_unknown{freshBusName(QStringLiteral("unknown"))};
};

std::string line(const char* format, const QString& name)
{
    return QString::fromLatin1(format).arg(name).toStdString();
}

} // namespace

TEST_F(ServiceRegistry, AnswersThePingIntervalOfAService)
{
    const QString name = add(2200);
    EXPECT_EQ(2200, m_info.pingInterval(name));
    EXPECT_THAT(m_device.lines(),
                ElementsAre(line("TRACE Ping interval of service %1 is 2200", name)));
}

TEST_F(ServiceRegistry, AnswersAnIntervalOfZeroForAnUnknownService)
{
    EXPECT_EQ(0, m_info.pingInterval(m_unknown));
    EXPECT_THAT(m_device.lines(),
                ElementsAre(line("TRACE Ping interval of service %1 is 0", m_unknown)));
}

TEST_F(ServiceRegistry, ChangesAnIntervalAndAnswersFalseAllTheSame)
{
    const QString name = add(1000);
    EXPECT_FALSE(m_info.setPingInterval(name, 50));
    EXPECT_EQ(50, m_info.pingInterval(name));
    EXPECT_THAT(m_device.lines(),
                ElementsAre(line("TRACE Set Ping interval of service %1 to 50", name),
                            line("TRACE Ping interval of service %1 is 50", name)));
}

TEST_F(ServiceRegistry, TracesAChangeOfAnUnknownServiceAndChangesNothing)
{
    EXPECT_FALSE(m_info.setPingInterval(m_unknown, -1));
    EXPECT_EQ(0, m_info.pingInterval(m_unknown));
    EXPECT_FALSE(ServiceInfo::isKnown(m_unknown));
    EXPECT_THAT(m_device.lines(),
                ElementsAre(line("TRACE Set Ping interval of service %1 to -1", m_unknown),
                            line("TRACE Ping interval of service %1 is 0", m_unknown)));
}

TEST_F(ServiceRegistry, KeepsTheFirstServiceOfANameAndDestroysTheSecondAtOnce)
{
    const QString name = add(1000);
    ServiceInfo::addService(name, service(2200));
    EXPECT_EQ(1, answers().destroyed);
    EXPECT_EQ(1000, m_info.pingInterval(name));
}

TEST_F(ServiceRegistry, DestroysAServiceAsWhatItIs)
{
    {
        const ServiceInfo::ServicePtr dropped = service();
        EXPECT_EQ(0, answers().destroyed);
    }
    EXPECT_EQ(1, answers().destroyed);
}

TEST_F(ServiceRegistry, KnowsProcessAndScriptOfItsServicesOnly)
{
    const QString name = add();
    EXPECT_TRUE(ServiceInfo::isKnown(name));
    EXPECT_EQ("pictor", ServiceInfo::processName(name));
    EXPECT_EQ("/opt/30_pictor", ServiceInfo::initScript(name));
    EXPECT_FALSE(ServiceInfo::isKnown(name.toUpper()));
    EXPECT_TRUE(ServiceInfo::processName(m_unknown).isEmpty());
    EXPECT_TRUE(ServiceInfo::initScript(m_unknown).isEmpty());
}

TEST_F(ServiceRegistry, TellsTheRunLevelOfAServiceThatAnswers)
{
    const QString name = add();
    answers().runLevel = QStringLiteral("starting");
    QString runLevel = QStringLiteral("down");
    EXPECT_TRUE(m_info.isAlive(name, runLevel));
    EXPECT_EQ("starting", runLevel);
    EXPECT_EQ(1, answers().pings);
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceRegistry, PassesOnThatAServiceDoesNotAnswer)
{
    const QString name = add();
    answers().isAlive = false;
    QString runLevel = QStringLiteral("down");
    EXPECT_FALSE(m_info.isAlive(name, runLevel));
    EXPECT_EQ("down", runLevel);
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceRegistry, ReportsEveryPingOfAnUnknownService)
{
    QString runLevel = QStringLiteral("as before");
    EXPECT_FALSE(m_info.isAlive(m_unknown, runLevel));
    EXPECT_FALSE(m_info.isAlive(m_unknown, runLevel));
    EXPECT_EQ("as before", runLevel);
    const std::string report = line("ERROR isAlive: Unknown service %1", m_unknown);
    EXPECT_THAT(m_device.lines(), ElementsAre(report, report));
}

TEST_F(ServiceRegistry, ReportsEachUnknownServiceOnceInDeveloperMode)
{
    const QString other = freshBusName(QStringLiteral("unknown"));
    QString runLevel = QStringLiteral("as before");
    for (int tick = 0; tick < 3; ++tick)
    {
        EXPECT_FALSE(m_developerInfo.isAlive(m_unknown, runLevel));
        EXPECT_FALSE(m_developerInfo.isAlive(other, runLevel));
    }
    EXPECT_EQ("as before", runLevel);
    EXPECT_THAT(m_device.lines(), ElementsAre(line("ERROR isAlive: Unknown service %1", m_unknown),
                                              line("ERROR isAlive: Unknown service %1", other)));
}

TEST_F(ServiceRegistry, StartsWithoutARegisteredService)
{
    const QString name = add();
    EXPECT_FALSE(m_info.isRegistered(name));
    EXPECT_THAT(m_info.registeredServices(), IsEmpty());
}

TEST_F(ServiceRegistry, RegistersAServiceOnceHoweverOftenItIsTold)
{
    const QString name = add();
    EXPECT_TRUE(m_info.registerService(name));
    EXPECT_TRUE(m_info.registerService(name));
    EXPECT_TRUE(m_info.isRegistered(name));
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(name));
}

TEST_F(ServiceRegistry, RefusesToRegisterAnUnknownService)
{
    const QString name = add();
    ASSERT_TRUE(m_info.registerService(name));
    EXPECT_FALSE(m_info.registerService(m_unknown));
    EXPECT_FALSE(m_info.isRegistered(m_unknown));
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(name));
}

TEST_F(ServiceRegistry, UnregistersAServiceAndIsContentIfItWasNotRegistered)
{
    const QString name = add();
    ASSERT_TRUE(m_info.registerService(name));
    EXPECT_TRUE(m_info.unregisterService(name));
    EXPECT_FALSE(m_info.isRegistered(name));
    EXPECT_TRUE(m_info.unregisterService(name));
}

TEST_F(ServiceRegistry, RefusesToUnregisterAnUnknownServiceOnly)
{
    const QString name = add();
    ASSERT_TRUE(m_info.registerService(name));
    EXPECT_FALSE(m_info.unregisterService(m_unknown));
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(name));
}

TEST_F(ServiceRegistry, ListsTheRegisteredServicesByName)
{
    const QString first = add();
    const QString second = add();
    const QString capital = freshBusName(QStringLiteral("Service"));
    ServiceInfo::addService(capital, service());
    for (const QString& name : {second, first, capital})
    {
        ASSERT_TRUE(m_info.registerService(name));
    }
    QStringList sorted{first, second, capital};
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, m_info.registeredServices());
    EXPECT_EQ(capital, m_info.registeredServices().first());
}

TEST_F(ServiceRegistry, KeepsTheRegisteredServicesOfEachInstanceApart)
{
    const QString name = add();
    ASSERT_TRUE(m_info.registerService(name));
    EXPECT_FALSE(m_developerInfo.isRegistered(name));
}

TEST_F(ServiceRegistry, TellsTheModeItWasBuiltWith)
{
    EXPECT_FALSE(m_info.isDeveloperMode());
    EXPECT_TRUE(m_developerInfo.isDeveloperMode());
}

TEST_F(ServiceRegistry, FindsTheSystemHealthy)
{
    EXPECT_TRUE(m_info.isSystemHealthy());
    EXPECT_TRUE(m_developerInfo.isSystemHealthy());
}

} // namespace orvo
