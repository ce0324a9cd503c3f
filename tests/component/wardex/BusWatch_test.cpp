#include "SupervisorOnTheBus.h"

#include "SimulatedService.h"

#include <QDBusConnectionInterface>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo
{

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

const QString kVistor = QLatin1String(kVistorBusName);
const QString kPictor = QLatin1String(kPictorBusName);
const QString kWirl = QLatin1String(kWirlBusName);

/// The supervisor's eyes on the names of the bus.
class BusWatch : public test::SupervisorOnTheBus
{
protected:
    static void SetUpTestSuite()
    {
        for (const QString& name : {kVistor, kPictor, kWirl})
        {
            ServiceInfo::addService(name, ServiceInfo::makeService<test::StubService>(
                                              QStringLiteral("x"), 1000, QString(), nullptr));
        }
    }

    bool runUntilLogged(const std::string& line)
    {
        return runUntil([&] { return testing::Matches(Contains(line))(m_device.lines()); });
    }
};

class RegistrationFailure : public test::SupervisorOnTheBus
{
protected:
    void SetUp() override {} // each claim builds the supervisor when the bus is as it needs it
};

} // namespace

TEST_F(BusWatch, SeesTheTwoMainServicesComeAndGo)
{
    for (const QString& name : {kVistor, kPictor})
    {
        const std::string text = name.toStdString();
        {
            const test::SimulatedService service(name);
            EXPECT_TRUE(runUntilLogged("TRACE DBus service " + text + " available"));
            EXPECT_TRUE(m_info.isRegistered(name));
        }
        EXPECT_TRUE(runUntilLogged("TRACE DBus Service " + text + " unavailable"));
        EXPECT_FALSE(m_info.isRegistered(name));
    }
    EXPECT_EQ(4U, m_device.lines().size());
}

TEST_F(BusWatch, DoesNotSeeAnyOtherService)
{
    const test::SimulatedService wirl(kWirl);
    const test::SimulatedService pictor(kPictor);
    EXPECT_TRUE(runUntilLogged("TRACE DBus service com.orvo.pictor available"));
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(kPictor));
    EXPECT_THAT(m_device.lines(), ElementsAre("TRACE DBus service com.orvo.pictor available"));
}

TEST_F(BusWatch, TellsOnlyChanges)
{
    const test::SimulatedService pictor(kPictor);
    ASSERT_TRUE(runUntilLogged("TRACE DBus service com.orvo.pictor available"));
    ASSERT_TRUE(m_info.unregisterService(kPictor));
    m_supervisor.reset();
    m_supervisor = std::make_unique<DbusCmd>(&m_info, &m_logger);
    const test::SimulatedService vistor(kVistor);
    EXPECT_TRUE(runUntilLogged("TRACE DBus service com.orvo.vistor available"));
    EXPECT_FALSE(m_info.isRegistered(kPictor)) << "it was there before the watch began";
}

TEST_F(BusWatch, ReportsAServiceThatCannotBeRegistered)
{
    const QString unknown = test::freshBusName(QStringLiteral("unknown"));
    m_supervisor->serviceRegistered(unknown);
    EXPECT_THAT(m_device.lines(),
                ElementsAre("TRACE DBus service " + unknown.toStdString() + " available",
                            "WARN DBus service " + unknown.toStdString() +
                                " could not be registered internally?!"));
    EXPECT_THAT(m_info.registeredServices(), IsEmpty());
}

TEST_F(BusWatch, ReportsAServiceThatCannotBeUnregistered)
{
    const QString unknown = test::freshBusName(QStringLiteral("unknown"));
    m_supervisor->serviceUnregistered(unknown);
    EXPECT_THAT(m_device.lines(),
                ElementsAre("TRACE DBus Service " + unknown.toStdString() + " unavailable",
                            "WARN DBus service " + unknown.toStdString() +
                                " could not be unregistered internally?!"));
}

TEST_F(RegistrationFailure, IsReportedWhenTheNameHasAnOwner)
{
    ASSERT_TRUE(m_client.registerService(kName));
    m_supervisor = std::make_unique<DbusCmd>(&m_info, &m_logger);
    EXPECT_THAT(m_device.lines(),
                ElementsAre("ERROR Could not register DBus service com.orvo.wardex"));
    const QDBusMessage reply = call("doPing", {}, QDBusConnection::systemBus().baseService());
    EXPECT_EQ("up", reply.arguments().value(1).toString()) << "the object is there all the same";
    m_client.unregisterService(kName);
}

TEST_F(RegistrationFailure, IsForEverAlsoWhenTheNameHasNoOwnerAnyMore)
{
    ASSERT_TRUE(m_client.registerService(kName));
    m_supervisor = std::make_unique<DbusCmd>(&m_info, &m_logger);
    ASSERT_TRUE(m_client.unregisterService(kName));
    EXPECT_EQ("", m_client.interface()->serviceOwner(kName).value().toStdString());
}

TEST_F(RegistrationFailure, IsReportedWhenThePathHasAnObject)
{
    QObject other;
    ASSERT_TRUE(QDBusConnection::systemBus().registerObject(QLatin1String(kBusObjectPath), &other,
                                                            QDBusConnection::ExportAllContents));
    m_supervisor = std::make_unique<DbusCmd>(&m_info, &m_logger);
    EXPECT_THAT(m_device.lines(), ElementsAre("ERROR Could not register DBus object"));
}

} // namespace orvo
