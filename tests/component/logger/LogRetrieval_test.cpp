#include "LogDevice.h"
#include "ScriptedRedis.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <unistd.h>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace orvo::Logger
{

namespace
{

constexpr char kNotConnected[] = "REDIS NOT CONNECTED !n";

/// The script around a condition, with the blanks that Redis sees.
std::string scriptWith(const std::string& range, const std::string& condition)
{
    const std::string gap(42, ' ');
    return "local entries=redis.call('LRANGE', 'LOG:ENTRIES', " + range + ") \n" + gap.substr(1) +
           "local b={};" + gap + "for i=1,#entries do" + gap + "  local entry = entries[i];" + gap +
           "  if (" + condition + ") then" + gap + "    b[#b+1] = entry;" + gap + "  end;" + gap +
           "end;" + gap + "return b;";
}

} // namespace

class LogRetrieval : public LoggerOnDevice
{
protected:
    void SetUp() override
    {
        m_logger.log(WARN, "one");
        m_logger.log(ERROR, "two");
        m_logger.log(FATAL, "three");
    }
};

TEST_F(LogRetrieval, ReadsAllRecordsOldestFirst)
{
    const auto entries = m_logger.getLogEntries(0, -1);
    EXPECT_EQ(3U, entries.size());
    EXPECT_EQ(m_records.raw(), entries);
    EXPECT_THAT(entries[0], testing::HasSubstr("\"M\":\"one\""));
}

TEST_F(LogRetrieval, ReadsARange)
{
    const auto raw = m_records.raw();
    EXPECT_THAT(m_logger.getLogEntries(-1, -1), ElementsAre(raw[2]));
    EXPECT_THAT(m_logger.getLogEntries(0, 0), ElementsAre(raw[0]));
    EXPECT_THAT(m_logger.getLogEntries(1, 2), ElementsAre(raw[1], raw[2]));
    EXPECT_THAT(m_logger.getLogEntries(3, 9), IsEmpty());
    EXPECT_THAT(m_logger.getLogEntries(2, 1), IsEmpty());
}

TEST_F(LogRetrieval, ReadsACutRecordWithAllItsBytes)
{
    m_logger.log(WARN, "%s", std::string(600, 'x').c_str());
    const std::string record = m_records.raw().back();
    EXPECT_EQ(500U, record.size());
    EXPECT_THAT(m_logger.getLogEntries(-1, -1), ElementsAre(record));
    EXPECT_THAT(m_logger.getLogEntriesFiltered(-1, -1, "true"), ElementsAre(record));
}

TEST_F(LogRetrieval, TellsTheErrorOfARead)
{
    m_client.command({"SET", kLogList, "no list"});
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_THAT(m_logger.getLogEntries(0, -1), IsEmpty());
    EXPECT_EQ("getLogEntries: WRONGTYPE Operation against a key holding the wrong kind of "
              "value(LRANGE LOG:ENTRIES 0 -1)",
              errors.text());
}

TEST_F(LogRetrieval, FiltersByACondition)
{
    const auto raw = m_records.raw();
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, R"(string.find(entry, '"C":"ERROR"'))"),
                ElementsAre(raw[1]));
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, "string.find(entry, 'T') ~= nil"),
                ElementsAre(raw[0], raw[1], raw[2]));
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, "false"), IsEmpty());
}

TEST_F(LogRetrieval, FiltersARangeOnly)
{
    const auto raw = m_records.raw();
    EXPECT_THAT(m_logger.getLogEntriesFiltered(-1, -1, "true"), ElementsAre(raw[2]));
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, 1, "true"), ElementsAre(raw[0], raw[1]));
}

TEST_F(LogRetrieval, TellsTheErrorAndTheScriptOfAConditionThatIsNoLua)
{
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, "no lua"), IsEmpty());
    EXPECT_THAT(errors.text(), testing::StartsWith("getLogEntriesFiltered: ERR Error compiling"));
    EXPECT_THAT(errors.text(), testing::EndsWith("(" + scriptWith("'0', '-1'", "no lua") + ")\n"));
}

TEST_F(LogRetrieval, SkipsWhatAConditionPutsInPlaceOfARecord)
{
    const auto raw = m_records.raw();
    EXPECT_THAT(m_logger.getLogEntriesFiltered(
                    0, -1, "(function() if i == 2 then entry = 5 end return true end)()"),
                ElementsAre(raw[0], raw[2]));
}

TEST_F(LogRetrieval, TakesAConditionThatFillsTheScript)
{
    const std::size_t room = 4095 - scriptWith("'0', '-1'", "").size();
    const std::string longest = "true" + std::string(room - 4, ' ');
    EXPECT_EQ(3U, m_logger.getLogEntriesFiltered(0, -1, longest).size());

    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, longest + " "), IsEmpty());
    EXPECT_EQ("getLogEntriesFiltered: script of 4096 bytes is too long (at most 4095)\n",
              errors.text());
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, std::string(100000, ' ')), IsEmpty());
}

// Lua, and so Redis, would see the condition up to there and take that for all of it.
TEST_F(LogRetrieval, RefusesAConditionWithAZeroByte)
{
    const test::StreamCapture errors(STDERR_FILENO);
    const std::string condition("true\0 and false", 15);
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, condition), IsEmpty());
    EXPECT_EQ("getLogEntriesFiltered: condition has a zero byte at 4\n", errors.text());
}

TEST_F(LogRetrieval, CountsAndClears)
{
    EXPECT_EQ(3, m_logger.getLogEntryCount());
    EXPECT_EQ(1, m_logger.clearLogEntries());
    EXPECT_EQ(0, m_logger.getLogEntryCount());
    EXPECT_THAT(m_logger.getLogEntries(0, -1), IsEmpty());
    EXPECT_EQ(1, m_logger.clearLogEntries()) << "any answer is a success";
    EXPECT_THAT(m_records.raw(), IsEmpty());
}

TEST_F(LogRetrieval, CountsNothingInWhatIsNoList)
{
    m_client.command({"SET", kLogList, "no list"});
    EXPECT_EQ(0, m_logger.getLogEntryCount());
}

TEST_F(LogRetrieval, TellsThatThereIsNoConnection)
{
    ASSERT_NO_FATAL_FAILURE(killRedis());
    EXPECT_EQ(-1, m_logger.log(WARN, "lost"));
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_THAT(m_logger.getLogEntries(0, -1), IsEmpty());
    EXPECT_EQ(kNotConnected, errors.text());
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, "true"), IsEmpty());
    EXPECT_EQ(0, m_logger.getLogEntryCount());
    EXPECT_EQ(0, m_logger.clearLogEntries());
    EXPECT_EQ(std::string(kNotConnected) + kNotConnected + kNotConnected + kNotConnected,
              errors.text());
}

/// The server hangs up at the first thing that is asked of it.
class BrokenLogRetrieval : public testing::Test
{
protected:
    /// The connection is kept in its error state: nothing works on it, and nothing is told.
    void expectSilentFailures()
    {
        const test::StreamCapture errors(STDERR_FILENO);
        EXPECT_THAT(m_logger.getLogEntries(0, -1), IsEmpty());
        EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, "true"), IsEmpty());
        EXPECT_EQ(0, m_logger.getLogEntryCount());
        EXPECT_EQ(0, m_logger.clearLogEntries());
        EXPECT_EQ(-1, m_logger.log(WARN, "one"));
        EXPECT_EQ("", errors.text());
    }

    test::ScriptedRedis m_server{kLogSocket, [](const std::vector<std::string>& command)
                                 {
                                     return test::ScriptedAnswer{"", command[0] != "SUBSCRIBE"};
                                 }};
    RedisLogger m_logger{"wardex", kLogSocket, kLogList, false};
};

TEST_F(BrokenLogRetrieval, GivesNothingFromAReadAndKeepsTheConnection)
{
    EXPECT_THAT(m_logger.getLogEntries(0, -1), IsEmpty());
    expectSilentFailures();
}

TEST_F(BrokenLogRetrieval, GivesNothingFromAFilteredReadAndKeepsTheConnection)
{
    EXPECT_THAT(m_logger.getLogEntriesFiltered(0, -1, "true"), IsEmpty());
    expectSilentFailures();
}

TEST_F(BrokenLogRetrieval, GivesNoCountAndKeepsTheConnection)
{
    EXPECT_EQ(0, m_logger.getLogEntryCount());
    expectSilentFailures();
}

TEST_F(BrokenLogRetrieval, GivesNoSuccessOfClearingAndKeepsTheConnection)
{
    EXPECT_EQ(0, m_logger.clearLogEntries());
    expectSilentFailures();
}

TEST(StrangeLogRetrieval, GivesNothingFromAnotherKindOfAnswer)
{
    const test::ScriptedRedis server(
        kLogSocket,
        [](const std::vector<std::string>& command) {
            return test::ScriptedAnswer{command[0] == "SUBSCRIBE" ? "" : "+OK\r\n", false};
        });
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_THAT(logger.getLogEntries(0, -1), IsEmpty());
    EXPECT_THAT(logger.getLogEntriesFiltered(0, -1, "true"), IsEmpty());
    EXPECT_EQ(0, logger.getLogEntryCount());
    EXPECT_EQ(1, logger.clearLogEntries());
    EXPECT_EQ("", errors.text());
}

/// What a server that is out of order may answer to a question before it hangs up.
struct BadAnswer
{
    std::string name;
    std::string bytes;
};

void PrintTo(const BadAnswer& answer, std::ostream* stream)
{
    *stream << answer.name;
}

class LogRetrievalAnswered : public testing::TestWithParam<BadAnswer>
{
protected:
    const test::ScriptedRedis m_server{
        kLogSocket, [](const std::vector<std::string>& command)
        {
            const bool isOurs = command[0] != "SUBSCRIBE";
            return test::ScriptedAnswer{isOurs ? GetParam().bytes : "", isOurs};
        }};
    // Keeps the configuration thread, whose end would take a second each time.
    const RedisLogger m_first{"first", kLogSocket, kLogList, false};
};

TEST_P(LogRetrievalAnswered, GivesNothing)
{
    using Question = std::function<bool(RedisLogger&)>;
    const std::vector<Question> questions{
        [](RedisLogger& logger) { return logger.getLogEntries(0, -1).empty(); },
        [](RedisLogger& logger) { return logger.getLogEntriesFiltered(0, -1, "true").empty(); },
        [](RedisLogger& logger) { return logger.getLogEntryCount() == 0; },
        [](RedisLogger& logger)
        {
            return logger.clearLogEntries() == 0;
        }};
    const test::StreamCapture errors(STDERR_FILENO);
    for (const Question& question : questions)
    {
        RedisLogger logger("wardex", kLogSocket, kLogList, false);
        EXPECT_TRUE(question(logger));
    }
    EXPECT_EQ("", errors.text());
}

INSTANTIATE_TEST_SUITE_P(By, LogRetrievalAnswered,
                         testing::Values(BadAnswer{"HalfAList", "*2\r\n$3\r\none\r\n"},
                                         BadAnswer{"HalfARecord", "*2\r\n$3\r\none\r\n$9\r\ntw"},
                                         BadAnswer{"HalfANumber", ":3"},
                                         BadAnswer{"APush", ">2\r\n+invalidate\r\n*0\r\n"},
                                         BadAnswer{"WhatIsNoAnswer", "hello\r\n"}),
                         [](const testing::TestParamInfo<BadAnswer>& answer)
                         { return answer.param.name; });

TEST(StrangeLogRetrieval, SendsTheScriptToTheByte)
{
    const test::ScriptedRedis server(
        kLogSocket,
        [](const std::vector<std::string>& command) {
            return test::ScriptedAnswer{command[0] == "SUBSCRIBE" ? "" : "*0\r\n", false};
        });
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    EXPECT_THAT(logger.getLogEntriesFiltered(2, -3, "true"), IsEmpty());
    EXPECT_THAT(server.commands(),
                testing::Contains("EVAL " + scriptWith("'2', '-3'", "true") + " 0"));
}

} // namespace orvo::Logger
