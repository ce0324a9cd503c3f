#include "LogDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::ElementsAre;

namespace orvo::Logger
{

/// Texts are remembered until the process ends, so each round of a test uses its own.
class LogOnce : public LoggerOnDevice
{
protected:
    static int nextRound()
    {
        static int last = 0;
        return ++last;
    }
    const int m_round = nextRound();
};

TEST_F(LogOnce, WritesTheSameTextOnce)
{
    EXPECT_LT(0, m_logger.logOnce(WARN, "same %d", m_round));
    EXPECT_EQ(0, m_logger.logOnce(WARN, "same %d", m_round));
    EXPECT_EQ(0, m_logger.logOnce(ERROR, "%s", ("same " + std::to_string(m_round)).c_str()));
    EXPECT_THAT(m_records.messages(), ElementsAre("same " + std::to_string(m_round)));
}

TEST_F(LogOnce, WritesATextForEachDifferentArgument)
{
    m_logger.logOnce(WARN, "%d: %s", m_round, "one");
    m_logger.logOnce(WARN, "%d: %s", m_round, "two");
    EXPECT_EQ(2U, m_records.messages("WARN").size());
}

TEST_F(LogOnce, DoesNotRememberATextAtAMaskedLevel)
{
    EXPECT_EQ(0, m_logger.logOnce(INFO, "masked %d", m_round));
    EXPECT_LT(0, m_logger.logOnce(WARN, "masked %d", m_round));
    EXPECT_EQ(0, m_logger.logOnce(WARN, "masked %d", m_round));
    EXPECT_THAT(m_records.messages(), ElementsAre("masked " + std::to_string(m_round)));
}

TEST_F(LogOnce, IsOnceForAllLoggersOfTheProcess)
{
    RedisLogger other("other", kLogSocket, kLogList, false);
    EXPECT_LT(0, m_logger.logOnce(WARN, "shared %d", m_round));
    EXPECT_EQ(0, other.logOnce(WARN, "shared %d", m_round));
    EXPECT_EQ(1U, m_records.raw().size());
}

TEST_F(LogOnce, OutlivesTheLoggerThatWrote)
{
    {
        RedisLogger other("other", kLogSocket, kLogList, false);
        EXPECT_LT(0, other.logOnce(WARN, "left %d", m_round));
    }
    EXPECT_EQ(0, m_logger.logOnce(WARN, "left %d", m_round));
}

TEST_F(LogOnce, TellsApartWhatIsStoredOfAText)
{
    const std::string longest = std::to_string(m_round) + std::string(498, 'x');
    const std::string stored = longest.substr(0, 499);
    EXPECT_EQ(499, m_logger.logOnce(WARN, "%s", (stored + "one").c_str()));
    EXPECT_EQ(0, m_logger.logOnce(WARN, "%s", (stored + "two").c_str()));
    EXPECT_EQ(498, m_logger.logOnce(WARN, "%s", stored.substr(0, 498).c_str()));
}

TEST_F(LogOnce, ComparesByteByByte)
{
    EXPECT_LT(0, m_logger.logOnce(WARN, "%d%c1", m_round, '\0'));
    EXPECT_LT(0, m_logger.logOnce(WARN, "%d%c2", m_round, '\0'));
    EXPECT_LT(0, m_logger.logOnce(WARN, "%d case", m_round));
    EXPECT_LT(0, m_logger.logOnce(WARN, "%d CASE", m_round));
}

TEST_F(LogOnce, RemembersATextWhoseWriteFailed)
{
    m_cache.kill();
    EXPECT_EQ(-1, m_logger.logOnce(WARN, "failed %d", m_round));
    EXPECT_EQ(0, m_logger.logOnce(WARN, "failed %d", m_round));
    EXPECT_EQ(-1, m_logger.logOnce(WARN, "failed otherwise %d", m_round));
}

} // namespace orvo::Logger
