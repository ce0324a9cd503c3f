#include "BusDaemon.h"
#include "Eventually.h"
#include "SimulatedService.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/PictorService.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QElapsedTimer>

#include <thread>

namespace orvo
{

/// The bus ends once in a program, so each claim wants to run alone, as ctest does it.
class PictorServiceLosingTheBus : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!QDBusConnection::systemBus().isConnected())
        {
            GTEST_SKIP() << "an earlier claim of this process has ended the bus";
        }
    }

    bool isAlive() { return m_service.isAlive(m_runLevel); }

    test::SimulatedService m_pictor{QLatin1String(kPictorBusName)};
    PictorService m_service{QStringLiteral("pictor"), QStringLiteral("/script")};
    QString m_runLevel = QStringLiteral("untouched");
};

TEST_F(PictorServiceLosingTheBus, IsDeadFromThatMomentOn)
{
    test::BusDaemon::ofThisProcess().crash();
    EXPECT_FALSE(isAlive());
    EXPECT_FALSE(isAlive());
    EXPECT_EQ(QStringLiteral("untouched"), m_runLevel);
    EXPECT_EQ(0, m_pictor.pings());
}

TEST_F(PictorServiceLosingTheBus, IsDeadAtOnceWhenItHappensDuringThePing)
{
    m_pictor.staysSilent();
    QElapsedTimer sinceThePing;
    sinceThePing.start();
    std::thread crash(
        [this, &sinceThePing]
        {
            // Not among the first looks for the answer, which follow each other closely.
            EXPECT_TRUE(
                test::eventually([this, &sinceThePing]
                                 { return m_pictor.pings() == 1 && sinceThePing.elapsed() > 50; }));
            test::BusDaemon::ofThisProcess().crash();
        });
    EXPECT_FALSE(isAlive());
    EXPECT_GT(m_service.pingTimeout(), sinceThePing.elapsed());
    EXPECT_EQ(QStringLiteral("untouched"), m_runLevel);
    crash.join();
}

} // namespace orvo
