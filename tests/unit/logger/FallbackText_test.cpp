#include "FallbackText.h"

#include <gtest/gtest.h>

namespace orvo::Logger
{

TEST(FallbackText, TurnsADoubledPercentSignIntoOne)
{
    EXPECT_EQ("100% of 50%", asFormatted("100%% of 50%%"));
    EXPECT_EQ("%%", asFormatted("%%%%"));
}

TEST(FallbackText, LeavesEveryOtherPercentSignAlone)
{
    EXPECT_EQ("%s %n %d %", asFormatted("%s %n %d %"));
    EXPECT_EQ("%%s", asFormatted("%%%s"));
}

TEST(FallbackText, IsEmptyForNoText)
{
    EXPECT_EQ("", asFormatted(""));
}

} // namespace orvo::Logger
