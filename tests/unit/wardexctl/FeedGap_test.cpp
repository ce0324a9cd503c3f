#include "top/FeedGap.h"

#include "RecordStory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::ctl
{

using test::RecordStory;

class FeedGapTest : public testing::Test
{
protected:
    [[nodiscard]] std::string text() const { return m_gap.line(false).front().text; }

    FeedGap m_gap;
};

TEST_F(FeedGapTest, IsUnknownWhenNobodyTells)
{
    EXPECT_EQ("Watchdog  feed gap unknown: neither the kernel nor a record tells", text());
    EXPECT_TRUE(m_gap.json()["from"].isNull());
    EXPECT_TRUE(m_gap.json()["longestSeconds"].isNull());
}

TEST_F(FeedGapTest, IsTheKernelsWhereItTellsTheTimeLeft)
{
    m_gap.look({30, 25});
    m_gap.look({30, 29});
    EXPECT_EQ("Watchdog  fed 1.0 s ago, longest gap seen 5.0 s of 30 s", text());
    EXPECT_EQ("kernel", m_gap.json()["from"].toString());
    EXPECT_EQ(1, m_gap.json()["currentSeconds"].toDouble());
    EXPECT_EQ(5, m_gap.json()["longestSeconds"].toDouble());
    EXPECT_EQ(30, m_gap.json()["timeoutSeconds"].toDouble());
}

TEST_F(FeedGapTest, WarnsOfMoreThanHalfTheTimeout)
{
    m_gap.look({60, 30});
    EXPECT_EQ(Tone::Plain, m_gap.line(false).front().tone);
    m_gap.look({60, 29});
    EXPECT_EQ(Tone::Warning, m_gap.line(false).front().tone);
}

TEST_F(FeedGapTest, IsTheLongestScriptRunOfTheRecordsElse)
{
    RecordStory story;
    story.starts(1).says(10, "WARN", "Service com.orvo.pictor considered dead, restarting");
    m_gap.add(story.records());
    EXPECT_EQ("Watchdog  gap between feeds not told; no script in the records held it up", text());
    m_gap.add(RecordStory().says(13, "INFO", "of another program", "pictor").records());
    m_gap.add(RecordStory().traces(14, "SuprDown::exit (com.orvo.pictor)").records());
    EXPECT_EQ("Watchdog  longest gap by the records 4.0 s (the scripts of pictor)", text());
    EXPECT_EQ("records", m_gap.json()["from"].toString());
    EXPECT_EQ(4, m_gap.json()["longestSeconds"].toDouble());
    EXPECT_TRUE(m_gap.json()["currentSeconds"].isNull());
    m_gap.look({30, std::nullopt});
    EXPECT_EQ("Watchdog  longest gap by the records 4.0 s of 30 s (the scripts of pictor)", text());
}

TEST_F(FeedGapTest, ForgetsRecordsThatBeginAnew)
{
    m_gap.add(RecordStory().starts(1).records());
    m_gap.look({30, std::nullopt});
    EXPECT_EQ("Watchdog  gap between feeds not told; no script in the records held it up; "
              "time-out 30 s",
              text());
    m_gap.forgetRecords();
    EXPECT_EQ("Watchdog  feed gap unknown: neither the kernel nor a record tells", text());
}

TEST_F(FeedGapTest, NobodyFeedsInDeveloperMode)
{
    EXPECT_EQ("Watchdog  not fed: developer mode", m_gap.line(true).front().text);
}

} // namespace orvo::ctl
