#include "log/LevelMask.h"
#include "log/LogQuery.h"
#include "log/RecordText.h"
#include "model/Duration.h"
#include "model/ScriptRuns.h"
#include "model/ServiceNames.h"

#include "RecordStory.h"

#include <gtest/gtest.h>

#include <ctime>

namespace orvo::ctl
{

using std::chrono::milliseconds;
using test::RecordStory;

TEST(DurationTest, TakesEveryUnitAndSecondsWithoutOne)
{
    EXPECT_EQ(milliseconds(1500), durationOf("1500ms"));
    EXPECT_EQ(milliseconds(30000), durationOf("30s"));
    EXPECT_EQ(milliseconds(30000), durationOf("30"));
    EXPECT_EQ(milliseconds(600000), durationOf("10m"));
    EXPECT_EQ(milliseconds(7200000), durationOf("2h"));
    EXPECT_EQ(milliseconds(86400000), durationOf("1d"));
}

TEST(DurationTest, TakesUpToWhatTheBusCanCarry)
{
    EXPECT_EQ(milliseconds(2147483647), durationOf("2147483647ms"));
    EXPECT_EQ(std::nullopt, durationOf("2147483648ms"));
    EXPECT_EQ(std::nullopt, durationOf("99999999999"));
}

TEST(DurationTest, RefusesWhatIsNone)
{
    for (const char* text : {"", "s", "-1s", "1.5s", "1 s", "1w", "s1", "1ss"})
    {
        EXPECT_EQ(std::nullopt, durationOf(text)) << text;
    }
}

TEST(DurationTest, IsReadWithTwoUnitsAtMost)
{
    EXPECT_EQ("0.0 s", durationText(-3));
    EXPECT_EQ("9.9 s", durationText(9.94));
    EXPECT_EQ("10 s", durationText(9.95));
    EXPECT_EQ("59 s", durationText(59.4));
    EXPECT_EQ("1 min 00 s", durationText(59.6));
    EXPECT_EQ("3 min 05 s", durationText(185));
    EXPECT_EQ("2 h 10 min", durationText(7800));
    EXPECT_EQ("4 d 03 h", durationText(4 * 86400 + 3 * 3600));
}

TEST(ServiceNamesTest, TakesBusNamesProcessNamesAndLastWords)
{
    for (const char* word : {"com.orvo.vistor", "vistor", "corvane"})
    {
        EXPECT_EQ("com.orvo.vistor", busNameOf(word)) << word;
    }
    EXPECT_EQ("com.orvo.other", busNameOf("com.orvo.other"));
    EXPECT_EQ(std::nullopt, busNameOf("other"));
    EXPECT_EQ(std::nullopt, busNameOf(""));
}

TEST(ServiceNamesTest, CallsAServiceByItsProcess)
{
    EXPECT_EQ("corvane", shortNameOf("com.orvo.vistor"));
    EXPECT_EQ("com.orvo.other", shortNameOf("com.orvo.other"));
    EXPECT_EQ("corvane, pictor, wirl, quorl", offeredNames());
}

class LevelMaskTest : public testing::Test
{
protected:
    std::uint32_t mask(const std::string& text, std::uint32_t present = 0xF0)
    {
        return maskOf(text, present, m_complaint).value_or(0xBAD);
    }

    std::string m_complaint;
};

TEST_F(LevelMaskTest, TakesNamesSetsAndWhatIsMoreSerious)
{
    EXPECT_EQ(0x10U, mask("WARN"));
    EXPECT_EQ(0x24U, mask("trace,error"));
    EXPECT_EQ(0xF0U, mask("warn+"));
    EXPECT_EQ(0xFFU, mask("all"));
    EXPECT_EQ(0x00U, mask("none"));
    EXPECT_EQ(0xF0U, mask("default"));
}

TEST_F(LevelMaskTest, ChangesThePresentMask)
{
    EXPECT_EQ(0xF4U, mask("+trace"));
    EXPECT_EQ(0xE4U, mask("+trace,-warn"));
    EXPECT_EQ(0x10U, mask("-error+", 0xF0));
}

TEST_F(LevelMaskTest, DropsBitsThatAreNoLevels)
{
    EXPECT_EQ(0xFFU, mask("+debug", 0xFFFFFFFF));
    EXPECT_EQ(0xFEU, mask("-debug", 0xFFFFFFFF));
}

TEST_F(LevelMaskTest, RefusesWhatIsNoLevelAndMixtures)
{
    for (const char* text : {"", "loud", "+trace,warn", "warn,+trace", "+", "warn,,error"})
    {
        EXPECT_EQ(0xBADU, mask(text)) << text;
        EXPECT_NE("", m_complaint) << text;
    }
}

TEST_F(LevelMaskTest, IsReadByNames)
{
    EXPECT_EQ("WARN,ERROR,FATAL,EMERG", maskText(0xF0));
    EXPECT_EQ("none", maskText(0));
    EXPECT_EQ(0xF5U, mask(maskText(0xF5)));
}

class LogQueryTest : public testing::Test
{
protected:
    /// 05:38:46 UTC on a day, at 1000 s of the device.
    static constexpr std::int64_t kWallMs = 1795239526000;
    static constexpr double kMonotonic = 1000.0;

    LogQueryTest()
    {
        qputenv("TZ", "UTC");
        tzset();
    }

    std::optional<LogQuery> query(const LogWords& words)
    {
        return LogQuery::of(words, kMonotonic, kWallMs, m_complaint);
    }

    double since(const std::string& text)
    {
        LogWords words;
        words.since = text;
        const auto found = query(words);
        return found ? found->serverFilter().since.value_or(-1) : -2;
    }

    bool passes(const LogWords& words, const std::string& level, const std::string& message)
    {
        return query(words)->passes(RecordStory().says(900, level, message).records().front());
    }

    std::string m_complaint;
};

TEST_F(LogQueryTest, TimeIsADurationAgoOrATimeOfDay)
{
    EXPECT_DOUBLE_EQ(400, since("10m"));
    EXPECT_DOUBLE_EQ(1000 - 46, since("05:38"));
    EXPECT_DOUBLE_EQ(1000 - 6, since("5:38:40"));
    // Later than now: yesterday's.
    EXPECT_DOUBLE_EQ(1000 - 86400 + 14, since("05:39"));
    EXPECT_DOUBLE_EQ(-2, since("noon"));
    EXPECT_EQ("'noon' is no time: say 10m, 05:30 or 05:30:10", m_complaint);
}

TEST_F(LogQueryTest, LevelPassesItAndWorseAndWhatIsNoLevel)
{
    LogWords words;
    words.level = "warn";
    EXPECT_FALSE(passes(words, "INFO", "m"));
    EXPECT_TRUE(passes(words, "WARN", "m"));
    EXPECT_TRUE(passes(words, "EMERG", "m"));
    EXPECT_TRUE(passes(words, "UNKNOWN", "m"));
}

TEST_F(LogQueryTest, ExpressionIsSearchedInTheMessageAndNeverSentToTheServer)
{
    LogWords words;
    words.regex = "pic.*dead$";
    EXPECT_TRUE(passes(words, "WARN", "x pictor is dead"));
    EXPECT_FALSE(passes(words, "WARN", "pictor is dead."));
    EXPECT_EQ("", query(words)->serverFilter().condition());
}

TEST_F(LogQueryTest, RefusesLevelsAndExpressionsThatAreNone)
{
    LogWords words;
    words.level = "loud";
    EXPECT_FALSE(query(words).has_value());
    words.level.clear();
    words.regex = "(";
    EXPECT_FALSE(query(words).has_value());
    EXPECT_EQ("'(' is no regular expression: missing closing parenthesis", m_complaint);
}

class RecordTextTest : public LogQueryTest
{
protected:
    const Output m_plain{false, false};
    const DeviceClock m_clock{kMonotonic, kWallMs};
};

TEST_F(RecordTextTest, HasWallTimeAgeLevelAndSource)
{
    const auto story = RecordStory().says(988, "WARN", "Bello is dead!!!").records();
    EXPECT_EQ("05:38:34.000  12 s WARN  wardex[7] Bello is dead!!!",
              recordText(m_plain, story.front(), m_clock));
    EXPECT_EQ("05:38:34.000 WARN  wardex Bello is dead!!!",
              shortRecordText(story.front(), m_clock));
}

TEST_F(RecordTextTest, ColoursByLevel)
{
    const auto story = RecordStory().says(988, "WARN", "m").records();
    EXPECT_EQ("\033[2m05:38:34.000  12 s\033[0m \033[33mWARN \033[0m wardex[7] \033[33mm\033[0m",
              recordText(Output(false, true), story.front(), m_clock));
}

TEST_F(RecordTextTest, MarksCutRecordsAndShowsForeignOnes)
{
    const ReadRecord cut =
        readRecord(R"({"T":"999.0000", "P":"7", "C":"WARN", "S":"wardex", "M":"long mess)");
    EXPECT_EQ("05:38:45.000   1 s WARN  wardex[7] long mess [cut]",
              recordText(m_plain, cut, m_clock));
    EXPECT_EQ("                   ?     foreign",
              recordText(m_plain, readRecord("foreign"), m_clock));
    EXPECT_TRUE(recordJson(cut, m_clock)["cut"].toBool());
}

TEST_F(RecordTextTest, RecordFromTheFutureIsOfAnEarlierLifeOfTheDevice)
{
    const auto story = RecordStory().says(5000, "WARN", "m").records();
    EXPECT_EQ("before start       WARN  wardex[7] m", recordText(m_plain, story.front(), m_clock));
    EXPECT_TRUE(recordJson(story.front(), m_clock)["age"].isNull());
}

TEST_F(RecordTextTest, JsonHasEveryField)
{
    const auto story = RecordStory().says(988, "WARN", "m").records();
    const QJsonObject expected{{"record", true},     {"time", "2026-11-21T05:38:34.000Z"},
                               {"age", 12.0},        {"monotonic", 988.0},
                               {"pid", "7"},         {"level", "WARN"},
                               {"source", "wardex"}, {"message", "m"},
                               {"cut", false}};
    EXPECT_EQ(expected, recordJson(story.front(), m_clock));
}

TEST(AgeTextTest, HasTheLargestUnitThatIsThereTwice)
{
    EXPECT_EQ("0 s", ageText(-1));
    EXPECT_EQ("119 s", ageText(119.9));
    EXPECT_EQ("2 m", ageText(120));
    EXPECT_EQ("119 m", ageText(7199));
    EXPECT_EQ("2 h", ageText(7200));
    EXPECT_EQ("47 h", ageText(172799));
    EXPECT_EQ("2 d", ageText(172800));
}

TEST(ScriptRunsTest, LastsFromTheScriptToTheNextRecord)
{
    RecordStory story;
    story.says(10, "WARN", "Service com.orvo.pictor considered dead, restarting");
    story.says(11, "WARN", "m", "pictor").traces(13.5, "SuprDown::exit (com.orvo.pictor)");
    story.restartsPackage(20).traces(22, "SuprUnstableSystem::exit");
    const auto run = longestScriptRun(story.records());
    ASSERT_TRUE(run.has_value());
    EXPECT_DOUBLE_EQ(3.5, run->seconds);
    EXPECT_EQ("the scripts of pictor", run->what);
}

TEST(ScriptRunsTest, AnotherLifeDoesNotEndAScript)
{
    RecordStory story;
    story.restartsPackage(10).process(8).starts(50);
    EXPECT_FALSE(longestScriptRun(story.records()).has_value());
}

TEST(OutputTest, PadsAndFits)
{
    EXPECT_EQ("ab  ", padded("ab", 4));
    EXPECT_EQ("abcde", padded("abcde", 4));
    EXPECT_EQ("abcd", fitted("abcd", 4));
    EXPECT_EQ("a...", fitted("abcde", 4));
    EXPECT_EQ("ab", fitted("abcde", 2));
}

} // namespace orvo::ctl
