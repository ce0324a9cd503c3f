#include "logger/RedisLogger.h"

#include "LogDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include <ctime>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace orvo::Logger
{

namespace
{

double monotonicNow()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

} // namespace

class RedisLoggerConstruction : public testing::Test
{
protected:
    static std::string complaintAbout(const std::string& path)
    {
        try
        {
            const RedisLogger logger("wardex", path, kLogList, false);
        }
        catch (const std::runtime_error& error)
        {
            return error.what();
        }
        return "none";
    }
};
class RedisLoggerRecord : public LoggerOnDevice
{
};

TEST_F(RedisLoggerConstruction, ThrowsTheErrorOfTheConnection)
{
    EXPECT_EQ("No such file or directory", complaintAbout("/tmp/nobody.sock"));
    test::RedisServer server("/tmp/server.sock");
    server.kill();
    EXPECT_EQ("Connection refused", complaintAbout("/tmp/server.sock"));
    EXPECT_THROW(RedisLogger("wardex", "127.0.0.1", 1, kLogList, false), std::runtime_error);
}

TEST_F(RedisLoggerConstruction, LeavesNothingBehindWhenItThrows)
{
    EXPECT_EQ("No such file or directory", complaintAbout("/tmp/nobody.sock"));
    const test::RedisServer server(kLogSocket);
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    EXPECT_EQ(3, logger.log(WARN, "one"));
    // The configuration thread came with this logger, not with the one that failed.
    EXPECT_EQ(1, test::RedisClient(kLogSocket).publishToListeners(kConfigChannel, "{}"));
}

TEST_F(RedisLoggerConstruction, ReachesRedisOverTcp)
{
    constexpr int kPort = 6390;
    const test::RedisServer server(kLogSocket, kPort);
    RedisLogger logger("wardex", "127.0.0.1", kPort, "LOG:OTHER", false);
    EXPECT_EQ(3, logger.log(WARN, "one"));
    EXPECT_TRUE(test::LogRecords(kLogSocket, "LOG:OTHER").expectOnce("WARN", "one"));
    EXPECT_EQ(1, test::RedisClient(kLogSocket).publishToListeners(kConfigChannel, "{}"));
}

TEST_F(RedisLoggerRecord, IsNotWrittenBelowWarnByDefault)
{
    EXPECT_EQ(0, m_logger.log(INFO, "unheard"));
    EXPECT_EQ(0, m_logger.log(DEBUG | DIAG | TRACE | INFO, "unheard"));
    EXPECT_EQ(0, m_logger.log(0, "unheard"));
    EXPECT_EQ(0, m_logger.log(0xffffff00, "unheard"));
    EXPECT_EQ(0, m_logger.write(INFO, "unheard", 0));
    EXPECT_THAT(m_records.raw(), IsEmpty());
}

TEST_F(RedisLoggerRecord, IsWrittenFromWarnOnByDefault)
{
    EXPECT_EQ(5, m_logger.log(WARN, "%s %d", "one", 1));
    EXPECT_EQ(3, m_logger.log(ERROR, "two"));
    EXPECT_EQ(5, m_logger.log(FATAL, "three"));
    EXPECT_EQ(4, m_logger.log(EMERG, "four"));
    EXPECT_THAT(m_records.messages("WARN"), ElementsAre("one 1"));
    EXPECT_THAT(m_records.messages("ERROR"), ElementsAre("two"));
    EXPECT_THAT(m_records.messages("FATAL"), ElementsAre("three"));
    EXPECT_THAT(m_records.messages("EMERG"), ElementsAre("four"));
}

TEST_F(RedisLoggerRecord, TellsTimeProcessLevelProgramAndMessage)
{
    const double before = monotonicNow();
    m_logger.log(WARN, "the message");
    const double after = monotonicNow();
    ASSERT_EQ(1U, m_records.raw().size());
    const test::LogRecordFields record = m_records.all()[0];
    EXPECT_EQ("{\"T\":\"" + record.time + "\", \"P\":\"" + std::to_string(getpid()) +
                  R"(", "C":"WARN", "S":"wardex", "M":"the message"})",
              record.raw);
    EXPECT_THAT(record.time, testing::MatchesRegex("[0-9]+\\.[0-9][0-9][0-9][0-9]"));
    EXPECT_GE(std::stod(record.time), before - 0.0001);
    EXPECT_LE(std::stod(record.time), after);
}

TEST_F(RedisLoggerRecord, NamesTwoLevelsInOneUnknown)
{
    configure(R"({"source":"all","mask":1})");
    EXPECT_EQ(4, m_logger.log(0x03, "both"));
    EXPECT_TRUE(m_records.expectOnce("UNKNOWN", "both"));
}

TEST_F(RedisLoggerRecord, EscapesItsMessage)
{
    EXPECT_EQ(7, m_logger.log(WARN, "%s", R"(a"b/c\d)"));
    EXPECT_THAT(m_records.raw()[0], testing::EndsWith(R"("M":"a\"b\/c\\d"})"));
}

TEST_F(RedisLoggerRecord, NeverSpansLines)
{
    EXPECT_EQ(5, m_logger.log(WARN, "a\nb\tc"));
    EXPECT_THAT(m_records.raw()[0], testing::EndsWith(R"("M":"a#b#c"})"));
    EXPECT_EQ(3, m_logger.log(WARN, "a%cb", '\0'));
    EXPECT_THAT(m_records.raw()[1], testing::EndsWith(R"("M":"a#b"})"));
}

TEST_F(RedisLoggerRecord, MayHaveAnEmptyMessage)
{
    EXPECT_EQ(0, m_logger.log(WARN, "%s", ""));
    EXPECT_THAT(m_records.raw()[0], testing::EndsWith(R"("M":""})"));
}

TEST_F(RedisLoggerRecord, HoldsAtMost499CharactersOfTheMessage)
{
    EXPECT_EQ(498, m_logger.log(WARN, "%s", std::string(498, 'x').c_str()));
    EXPECT_EQ(499, m_logger.log(WARN, "%s", std::string(499, 'x').c_str()));
    EXPECT_EQ(499, m_logger.log(WARN, "%s", std::string(500, 'x').c_str()));
    EXPECT_EQ(499, m_logger.log(WARN, "%s", std::string(600, 'x').c_str()));
}

TEST_F(RedisLoggerRecord, Is500BytesEndingInAZeroByteWhenItIsTooLong)
{
    m_logger.log(WARN, "%s", std::string(600, 'x').c_str());
    const std::string record = m_records.raw()[0];
    EXPECT_EQ(500U, record.size());
    EXPECT_EQ(499U, record.find('\0'));
    EXPECT_EQ(std::string("xxx\0", 4), record.substr(496));
}

TEST_F(RedisLoggerRecord, TakesAPreformattedTextAsItIs)
{
    EXPECT_EQ(8, m_logger.write(WARN, "%s%n 100", 0));
    EXPECT_EQ(3, m_logger.write(ERROR, "abcdef", 3));
    EXPECT_EQ(600, m_logger.write(FATAL, std::string(600, 'x').c_str(), 0));
    EXPECT_TRUE(m_records.expectOnce("WARN", "%s%n 100"));
    EXPECT_TRUE(m_records.expectOnce("ERROR", "abc"));
    EXPECT_EQ(500U, m_records.raw()[2].size());
}

TEST_F(RedisLoggerRecord, IsPublishedExactlyAsItWasAppended)
{
    test::RedisClient listener(kLogSocket);
    listener.subscribe(kLogList);
    m_logger.log(WARN, "one \"%s\"", "two");
    m_logger.log(ERROR, "%s", std::string(600, 'x').c_str());
    const std::vector<std::string> heard{listener.nextMessage(), listener.nextMessage()};
    EXPECT_EQ(m_records.raw(), heard);
}

TEST_F(RedisLoggerRecord, IsOneOfTheLastAsManyAsTheListKeeps)
{
    configure(R"({"source":"all","max":3})");
    for (const char* text : {"one", "two", "three", "four", "five"})
    {
        m_logger.log(WARN, "%s", text);
    }
    EXPECT_THAT(m_records.messages(), ElementsAre("three", "four", "five"));
}

TEST_F(RedisLoggerRecord, CountsAsWrittenWhateverRedisAnswers)
{
    m_client.command({"SET", kLogList, "no list"});
    EXPECT_EQ(3, m_logger.log(WARN, "one"));
    EXPECT_EQ(3, m_logger.log(WARN, "two"));
}

} // namespace orvo::Logger
