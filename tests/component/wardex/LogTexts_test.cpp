// A program of its own: it counts the 8-bit texts that the supervisor makes, which only its log
// lines call for.

#include "Eventually.h"
#include "RedisClient.h"
#include "SupervisedDevice.h"

#include "logger/LogDefaults.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace
{
int g_texts = 0;
} // namespace

/// What qPrintable() and toLocal8Bit() come down to; stands in front of Qt's own.
QByteArray QString::toLocal8Bit_helper(const QChar* data, int size)
{
    using Helper = QByteArray (*)(const QChar*, int);
    static auto original =
        reinterpret_cast<Helper>(dlsym(RTLD_NEXT, "_ZN7QString18toLocal8Bit_helperEPK5QChari"));
    ++g_texts;
    return original(data, size);
}

namespace orvo::test
{

class TextsForTheLog : public testing::Test
{
protected:
    static void setMask(int mask)
    {
        const auto announced = []
        {
            return LogRecords().messages("INFO").size();
        };
        const std::size_t before = announced();
        RedisClient(Logger::kLogSocket)
            .publishToListeners(Logger::kConfigChannel,
                                R"({"source":"all","mask":)" + std::to_string(mask) + "}");
        ASSERT_TRUE(eventually([&] { return announced() > before; }));
    }

    /// Lets both machines and the bus commands meet whatever they have a line for.
    int textsOfABusyDay()
    {
        const int before = g_texts;
        m_device.supervise(kPictor);
        m_device.afterPings(kPictor, 2);
        m_device.service(kPictor).fail();
        m_device.registry().unregisterService(QLatin1String(kPictor));
        m_device.afterPings(kPictor, 1);
        m_device.bringTo("SuprUnstableSystem");
        m_device.afterPings(kPictor, 10); // seven to be down, two more to be dead
        m_device.reportUp(kVistor);
        m_device.reportUp(kPictor);
        m_device.reportUp(kVistor); // suspicious
        m_device.reportDown(kPictor);
        m_device.machine(kPictor).registered(QLatin1String(kPictor));
        DbusCmd& commands = *m_device.context()->dbusCmd;
        (void)commands.setServicePingTimeoutOneShot(QLatin1String(kPictor), 1000);
        (void)commands.setServicePingTimeoutOneShot(QLatin1String(kWirl), 1000);
        commands.serviceRegistered(QStringLiteral("com.orvo.no"));
        commands.serviceUnregistered(QStringLiteral("com.orvo.no"));
        m_device.registry().setPingInterval(QLatin1String(kPictor), 1000);
        QString level;
        (void)m_device.registry().isAlive(QStringLiteral("com.orvo.no"), level);
        return g_texts - before;
    }

    SupervisedDevice m_device{SupervisedDevice::Mode::Field};
};

TEST_F(TextsForTheLog, AreMadeForLinesThatAreWritten)
{
    setMask(255);
    EXPECT_LT(60, textsOfABusyDay());
}

TEST_F(TextsForTheLog, AreNotMadeForMaskedLines)
{
    setMask(0);
    m_device.forgetThePast();
    EXPECT_EQ(0, textsOfABusyDay());
    EXPECT_EQ(Lines(), m_device.newRecords());
}

} // namespace orvo::test
