#include "top/TopLog.h"

#include "RecordStory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::ctl
{

using test::RecordStory;
using testing::ElementsAre;
using testing::IsEmpty;

class TopLogTest : public testing::Test
{
protected:
    /// Records that say "0", "1", ... from the first number on.
    void add(int count, const std::string& level = "WARN")
    {
        RecordStory story;
        for (int number = 0; number < count; ++number)
        {
            story.says(m_next, level, std::to_string(m_next));
            ++m_next;
        }
        m_log.add(story.records());
    }

    [[nodiscard]] std::vector<std::string> shown(std::size_t height) const
    {
        std::vector<std::string> messages;
        for (const ReadRecord* record : m_log.window(height))
        {
            messages.push_back(record->message);
        }
        return messages;
    }

    TopLog m_log;
    std::string m_complaint;
    int m_next{0};
};

TEST_F(TopLogTest, FollowsTheNewest)
{
    EXPECT_THAT(shown(3), IsEmpty());
    add(2);
    EXPECT_THAT(shown(3), ElementsAre("0", "1"));
    add(2);
    EXPECT_THAT(shown(3), ElementsAre("1", "2", "3"));
    EXPECT_TRUE(m_log.isFollowing());
    EXPECT_EQ(0U, m_log.newer());
    EXPECT_THAT(shown(0), IsEmpty());
}

TEST_F(TopLogTest, StaysWhereItWasScrolledToWhileRecordsCome)
{
    add(10);
    m_log.scroll(-2, 3);
    EXPECT_THAT(shown(3), ElementsAre("5", "6", "7"));
    add(5);
    EXPECT_THAT(shown(3), ElementsAre("5", "6", "7"));
    EXPECT_EQ(7U, m_log.newer());
    m_log.scroll(6, 3);
    EXPECT_THAT(shown(3), ElementsAre("11", "12", "13"));
    EXPECT_FALSE(m_log.isFollowing());
    m_log.scroll(1, 3);
    EXPECT_TRUE(m_log.isFollowing());
}

TEST_F(TopLogTest, StopsAtTheOldest)
{
    add(5);
    m_log.scroll(-100, 3);
    EXPECT_THAT(shown(3), ElementsAre("0", "1", "2"));
    m_log.scroll(1, 3);
    EXPECT_THAT(shown(3), ElementsAre("1", "2", "3"));
    m_log.toOldest(3);
    EXPECT_THAT(shown(3), ElementsAre("0", "1", "2"));
    m_log.follow();
    EXPECT_THAT(shown(3), ElementsAre("2", "3", "4"));
}

TEST_F(TopLogTest, FollowsOnWhileAllFitsInTheWindow)
{
    m_log.scroll(-1, 3);
    m_log.toOldest(3);
    EXPECT_TRUE(m_log.isFollowing());
    add(3);
    m_log.scroll(-1, 3);
    m_log.toOldest(3);
    EXPECT_TRUE(m_log.isFollowing());
}

TEST_F(TopLogTest, KeepsTheNewestTenThousand)
{
    add(10000);
    m_log.toOldest(2);
    EXPECT_THAT(shown(2), ElementsAre("0", "1"));
    EXPECT_EQ(10000U, m_log.passing());
    add(3);
    EXPECT_EQ(10000U, m_log.records().size());
    EXPECT_EQ(10000U, m_log.passing());
    EXPECT_THAT(shown(2), ElementsAre("3", "4"));
    m_log.follow();
    EXPECT_THAT(shown(1), ElementsAre("10002"));
}

TEST_F(TopLogTest, ShowsWhatMatchesTheExpression)
{
    add(20);
    EXPECT_TRUE(m_log.setFilter("^1[0-2]$", m_complaint));
    EXPECT_THAT(shown(5), ElementsAre("10", "11", "12"));
    m_log.add(RecordStory().says(20, "WARN", "11").says(20, "WARN", "x").records());
    EXPECT_THAT(shown(5), ElementsAre("10", "11", "12", "11"));
    EXPECT_FALSE(m_log.setFilter("(", m_complaint));
    EXPECT_THAT(m_complaint, testing::StartsWith("'(' is no regular expression: "));
    EXPECT_EQ("^1[0-2]$", m_log.filter());
    EXPECT_TRUE(m_log.setFilter("", m_complaint));
    EXPECT_EQ(22U, m_log.passing());
}

TEST_F(TopLogTest, GoesRoundTheLevels)
{
    for (const char* level : {"TRACE", "INFO", "WARN", "ERROR", "FATAL", "EMERG"})
    {
        add(1, level);
    }
    std::vector<std::string> levels;
    std::vector<std::size_t> passing;
    for (int step = 0; step < 7; ++step)
    {
        levels.push_back(m_log.level());
        passing.push_back(m_log.passing());
        m_log.nextLevel();
    }
    EXPECT_THAT(levels, ElementsAre("", "INFO", "WARN", "ERROR", "FATAL", "EMERG", ""));
    EXPECT_THAT(passing, ElementsAre(6, 5, 4, 3, 2, 1, 6));
}

TEST_F(TopLogTest, AnswersTheNewestWhateverTheFilter)
{
    add(3);
    EXPECT_TRUE(m_log.setFilter("x", m_complaint));
    ASSERT_EQ(2U, m_log.newest(2).size());
    EXPECT_EQ("1", m_log.newest(2).front().message);
    EXPECT_EQ(3U, m_log.newest(10).size());
}

} // namespace orvo::ctl
