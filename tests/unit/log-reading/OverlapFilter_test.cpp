#include "log-reading/OverlapFilter.h"

#include <gtest/gtest.h>

namespace orvo
{

namespace
{
std::string recordAt(const std::string& time, const std::string& text = "m")
{
    return R"({"T":")" + time + R"(", "P":"1", "C":"WARN", "S":"s", "M":")" + text + "\"}";
}
} // namespace

TEST(OverlapFilterTest, DropsWhatWasStoredAndPassesWhatWasNot)
{
    OverlapFilter filter({recordAt("1.0000"), recordAt("2.0000")});
    EXPECT_FALSE(filter.isNew(recordAt("2.0000")));
    EXPECT_TRUE(filter.isNew(recordAt("3.0000")));
}

TEST(OverlapFilterTest, PassesARecordThatOvertookAStoredOne)
{
    OverlapFilter filter({recordAt("1.0000", "a"), recordAt("1.0000", "b")});
    EXPECT_TRUE(filter.isNew(recordAt("1.0000", "c")));
    EXPECT_FALSE(filter.isNew(recordAt("1.0000", "b")));
    EXPECT_FALSE(filter.isNew(recordAt("1.0000", "a")));
}

TEST(OverlapFilterTest, CountsRecordsThatLookAlike)
{
    OverlapFilter filter({recordAt("1.0000"), recordAt("1.0000")});
    EXPECT_FALSE(filter.isNew(recordAt("1.0000")));
    EXPECT_FALSE(filter.isNew(recordAt("1.0000")));
    EXPECT_TRUE(filter.isNew(recordAt("1.0000")));
}

TEST(OverlapFilterTest, ForgetsTheStoredRecordsOnceTheyAreFiveSecondsOld)
{
    OverlapFilter still({recordAt("1.0000")});
    EXPECT_TRUE(still.isNew(recordAt("6.0000")));
    EXPECT_FALSE(still.isNew(recordAt("1.0000")));
    OverlapFilter forgot({recordAt("1.0000")});
    EXPECT_TRUE(forgot.isNew(recordAt("6.0001")));
    EXPECT_TRUE(forgot.isNew(recordAt("1.0000")));
}

TEST(OverlapFilterTest, PassesEverythingWhenNothingWasStored)
{
    OverlapFilter filter({});
    EXPECT_TRUE(filter.isNew("a"));
    EXPECT_TRUE(filter.isNew("a"));
}

} // namespace orvo
