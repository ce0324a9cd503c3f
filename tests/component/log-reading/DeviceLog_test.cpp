#include "Eventually.h"
#include "RedisClient.h"
#include "RedisServer.h"
#include "log-reading/DeviceLog.h"
#include "log-reading/RecordFilter.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace orvo
{

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
/// The message of a record, as it stands there.
std::string messageOf(const std::string& record)
{
    const std::size_t begin = record.find("\"M\":\"") + 5;
    return record.substr(begin, record.rfind("\"}") - begin);
}
} // namespace

class DeviceLogTest : public testing::Test
{
protected:
    /// The messages of the news.
    static std::vector<std::string> news(DeviceLog& log)
    {
        std::vector<std::string> messages;
        for (const std::string& record : log.news())
        {
            messages.push_back(messageOf(record));
        }
        return messages;
    }

    std::vector<std::string> matching(const RecordFilter& filter) const
    {
        DeviceLog log(filter.condition().value());
        return news(log);
    }

    void write(const std::string& message, std::uint32_t level = Logger::ERROR)
    {
        m_device.write(level, message.c_str(), 0);
    }

    void configure(const std::string& text)
    {
        const int before = m_device.getLogEntryCount();
        m_client.publishToListeners(Logger::kConfigChannel, text);
        ASSERT_TRUE(test::eventually([&] { return m_device.getLogEntryCount() > before; }));
    }

    test::RedisServer m_cache{Logger::kLogSocket};
    test::RedisServer m_store{Logger::kConfigSocket};
    test::RedisClient m_client{Logger::kLogSocket};
    Logger::RedisLogger m_device{"wardex", Logger::kLogSocket, Logger::kLogList, false};
};

TEST_F(DeviceLogTest, ShowsWhatIsKeptAndThenOnlyWhatComes)
{
    write("a");
    write("b");
    DeviceLog log("");
    EXPECT_THAT(news(log), ElementsAre("a", "b"));
    EXPECT_THAT(news(log), IsEmpty());
    write("c");
    EXPECT_THAT(news(log), ElementsAre("c"));
    EXPECT_FALSE(log.isGapped());
}

TEST_F(DeviceLogTest, ShowsEachRecordOnceWhileTheListIsTrimmed)
{
    configure(R"({"source":"wardex","max":100})");
    m_device.clearLogEntries();
    DeviceLog log("");
    std::vector<std::string> written;
    std::vector<std::string> shown;
    // Bursts of up to the whole list between two looks.
    for (int burst = 1; burst < 100; burst += 7)
    {
        for (int number = 0; number < burst; ++number)
        {
            written.push_back(std::to_string(burst) + "." + std::to_string(number));
            write(written.back());
        }
        const std::vector<std::string> fresh = news(log);
        EXPECT_FALSE(log.isGapped());
        shown.insert(shown.end(), fresh.begin(), fresh.end());
    }
    EXPECT_EQ(written, shown);
}

TEST_F(DeviceLogTest, TellsWhenTheListNoLongerHasWhatFollowed)
{
    configure(R"({"source":"wardex","max":2})");
    DeviceLog log("");
    (void)news(log);
    write("lost");
    write("b");
    write("c");
    EXPECT_THAT(news(log), ElementsAre("b", "c"));
    EXPECT_TRUE(log.isGapped());
    EXPECT_THAT(news(log), IsEmpty());
    EXPECT_FALSE(log.isGapped());
}

TEST_F(DeviceLogTest, ShowsTheRecordsOfAClearedListOnce)
{
    write("a");
    DeviceLog log("");
    (void)news(log);
    m_device.clearLogEntries();
    EXPECT_THAT(news(log), IsEmpty());
    write("b");
    EXPECT_THAT(news(log), ElementsAre("b"));
    EXPECT_FALSE(log.isGapped());
}

TEST_F(DeviceLogTest, GoesOnWhenRedisIsBack)
{
    write("a");
    DeviceLog log("");
    (void)news(log);
    m_cache.kill();
    EXPECT_THAT(news(log), IsEmpty());
    m_cache.restart();
    Logger::RedisLogger later("later", Logger::kLogSocket, Logger::kLogList, false);
    later.write(Logger::WARN, "b", 0);
    EXPECT_THAT(news(log), ElementsAre("b"));
}

TEST_F(DeviceLogTest, CannotBeMadeWithoutRedis)
{
    m_cache.kill();
    EXPECT_THROW(DeviceLog(""), std::runtime_error);
}

TEST_F(DeviceLogTest, CanBeReadWithoutTheStoredConfigurations)
{
    m_store.kill();
    write("a");
    DeviceLog log("");
    EXPECT_THAT(news(log), ElementsAre("a"));
}

TEST_F(DeviceLogTest, FollowsThroughAFilter)
{
    DeviceLog log(RecordFilter{"", "door"}.condition().value());
    write("door 1");
    write("laser");
    EXPECT_THAT(news(log), ElementsAre("door 1"));
    for (int number = 0; number < 200; ++number)
    {
        write("laser");
    }
    EXPECT_THAT(news(log), IsEmpty());
    write("door 2");
    write("laser");
    write("door 3");
    EXPECT_THAT(news(log), ElementsAre("door 2", "door 3"));
    EXPECT_THAT(news(log), IsEmpty());
}

TEST_F(DeviceLogTest, LevelLetsMoreSeriousOnesThrough)
{
    configure(R"({"source":"wardex","mask":255})");
    m_device.clearLogEntries();
    const std::vector<std::string>& names = levelNames();
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        write(names[index], 1U << index);
    }
    for (auto name = names.begin(); name != names.end(); ++name)
    {
        EXPECT_EQ(std::vector<std::string>(name, names.end()), matching({*name, ""}));
    }
}

TEST_F(DeviceLogTest, RecordOfNoKnownLevelPassesAnyLevel)
{
    write("odd", 0x30);
    EXPECT_THAT(matching({"EMERG", ""}), ElementsAre("odd"));
}

TEST_F(DeviceLogTest, LevelInAMessageIsNoLevel)
{
    write(R"("C":"EMERG")", Logger::WARN);
    EXPECT_THAT(matching({"ERROR", ""}), IsEmpty());
}

TEST_F(DeviceLogTest, TextIsSearchedInTheMessageOnly)
{
    write("laser off");
    EXPECT_THAT(matching({"", "laser"}), ElementsAre("laser off"));
    for (const char* around : {"wardex", "ERROR", "\"M\":", "}", "{", "\""})
    {
        EXPECT_THAT(matching({"", around}), IsEmpty()) << around;
    }
}

TEST_F(DeviceLogTest, LevelAndTextMustBothFit)
{
    write("door", Logger::WARN);
    write("door", Logger::ERROR);
    write("laser", Logger::ERROR);
    EXPECT_EQ(1U, matching({"ERROR", "door"}).size());
}

TEST_F(DeviceLogTest, SourceIsTheWholeNameOfTheProgram)
{
    write("ours");
    Logger::RedisLogger other("wardex2", Logger::kLogSocket, Logger::kLogList, false);
    other.write(Logger::ERROR, "other", 0);
    EXPECT_THAT(matching({"", "", "wardex"}), ElementsAre("ours"));
    EXPECT_THAT(matching({"", "", "wardex2"}), ElementsAre("other"));
    EXPECT_THAT(matching({"", "", "ward"}), IsEmpty());
    EXPECT_THAT(matching({"", "", "') or true or ('"}), IsEmpty());
}

TEST_F(DeviceLogTest, TimeIsTheFirstThatIsShownAndWhatHasNonePasses)
{
    m_client.command(
        {"RPUSH", Logger::kLogList, R"({"T":"9.9999", "P":"1", "C":"WARN", "M":"a"})"});
    m_client.command(
        {"RPUSH", Logger::kLogList, R"({"T":"10.0000", "P":"1", "C":"WARN", "M":"b"})"});
    m_client.command({"RPUSH", Logger::kLogList, R"({"M":"none"})"});
    EXPECT_THAT(matching({"", "", "", 10.0}), ElementsAre("b", "none"));
    EXPECT_THAT(matching({"", "", "", 9.9999}), ElementsAre("a", "b", "none"));
    EXPECT_THAT(matching({"", "", "", -1.0}), ElementsAre("a", "b", "none"));
}

TEST_F(DeviceLogTest, AnyTextIsFoundLiterallyAndNowhereElse)
{
    const std::vector<std::string> hostile{"'",
                                           "\"",
                                           "\\",
                                           "\\\\",
                                           "/",
                                           "]]",
                                           "[[x]]",
                                           "--",
                                           "%",
                                           "%s%n",
                                           ".*",
                                           "^a$",
                                           "'..nil..'",
                                           "\n",
                                           "\t\r",
                                           "\x7f",
                                           "\xc3\xbc",
                                           "{1}",
                                           "' or true or '",
                                           "') or redis.call('DEL','LOG:ENTRIES') or ('",
                                           "\\' or true --",
                                           "]==]",
                                           "1\\0492"};
    // What is not printable stands in the record as '#', so the numbers tell such texts apart.
    const auto numbered = [&](std::size_t index)
    {
        return "<" + std::to_string(index) + hostile[index] + ">";
    };
    write("plain");
    for (std::size_t index = 0; index < hostile.size(); ++index)
    {
        write(numbered(index));
    }
    for (std::size_t index = 0; index < hostile.size(); ++index)
    {
        EXPECT_EQ(1U, matching({"", numbered(index)}).size()) << hostile[index];
    }
    EXPECT_EQ(static_cast<int>(hostile.size()) + 1, m_device.getLogEntryCount());
}

TEST_F(DeviceLogTest, LongestTextThatIsTakenFitsTheScript)
{
    std::size_t length = 0;
    while (RecordFilter{"DEBUG", std::string(length + 1, '/')}.condition())
    {
        ++length;
    }
    ASSERT_GT(length, 300U);
    write("other");
    // Longer than any message: only a script that runs can say that nothing matches.
    const RecordFilter filter{"DEBUG", std::string(length, '/')};
    DeviceLog log("not (" + filter.condition().value() + ")");
    EXPECT_THAT(news(log), ElementsAre("other"));
}

} // namespace orvo
