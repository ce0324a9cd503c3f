#include "log-reading/RecordTail.h"

#include <gtest/gtest.h>

namespace orvo
{

class RecordTailTest : public testing::Test
{
protected:
    using Window = std::vector<std::string>;

    void seen(const Window& window) { m_tail.add(window, 0); }

    RecordTail m_tail;
};

TEST_F(RecordTailTest, KnowsNoBeginBeforeItHasSeenAnything)
{
    EXPECT_TRUE(m_tail.isEmpty());
    EXPECT_EQ(std::nullopt, m_tail.begin({"a"}));
}

TEST_F(RecordTailTest, BeginsAfterTheLastRecordSeen)
{
    seen({"a", "b"});
    EXPECT_EQ(2U, m_tail.begin({"a", "b", "c"}));
}

TEST_F(RecordTailTest, AddsOnlyWhatItHasNotSeen)
{
    seen({"a", "b"});
    m_tail.add({"a", "b", "c"}, 2);
    EXPECT_EQ(3U, m_tail.begin({"a", "b", "c", "d"}));
}

TEST_F(RecordTailTest, FindsNothingNewInWhatItHasSeen)
{
    seen({"a", "b"});
    EXPECT_EQ(2U, m_tail.begin({"a", "b"}));
}

TEST_F(RecordTailTest, BeginsAtTheRightPlaceOfATrimmedList)
{
    seen({"a", "b", "c"});
    EXPECT_EQ(1U, m_tail.begin({"c", "d", "e"}));
}

TEST_F(RecordTailTest, BeginsAtTheRightPlaceOfAWindowThatReachesBackFurther)
{
    seen({"c", "d"});
    EXPECT_EQ(4U, m_tail.begin({"a", "b", "c", "d", "e"}));
}

TEST_F(RecordTailTest, KnowsNoBeginWhenAllItHasSeenIsGone)
{
    seen({"a", "b"});
    EXPECT_EQ(std::nullopt, m_tail.begin({"c", "d"}));
    EXPECT_EQ(std::nullopt, m_tail.begin({}));
}

TEST_F(RecordTailTest, TellsRecordsThatLookAlikeApartByTheirNeighbours)
{
    seen({"p", "x"});
    EXPECT_EQ(2U, m_tail.begin({"p", "x", "x"}));
    seen({"x"});
    EXPECT_EQ(3U, m_tail.begin({"p", "x", "x"}));
}

TEST_F(RecordTailTest, BeginsAfterAPartThatIsRepeated)
{
    seen({"a", "b"});
    EXPECT_EQ(2U, m_tail.begin({"a", "b", "c", "b"}));
}

TEST_F(RecordTailTest, BeginsAnewAfterForgetting)
{
    seen({"a"});
    m_tail.forget();
    EXPECT_EQ(std::nullopt, m_tail.begin({"a"}));
}

TEST_F(RecordTailTest, RemembersTheEndOfALongList)
{
    Window window;
    for (int number = 0; number < 1000; ++number)
    {
        window.push_back(std::to_string(number));
    }
    seen(window);
    window.emplace_back("new");
    EXPECT_EQ(1000U, m_tail.begin(window));
}

} // namespace orvo
