#include "LogRecords.h"

#include <gtest/gtest.h>

namespace orvo::test
{

TEST(LogRecords, TakesARecordApart)
{
    const auto fields =
        parseLogRecord(R"({"T":"12.0345", "P":"817", "C":"WARN", "S":"wardex", "M":"a\"b\/c\\d"})");
    EXPECT_TRUE(fields.isWhole);
    EXPECT_EQ("12.0345", fields.time);
    EXPECT_EQ("817", fields.pid);
    EXPECT_EQ("WARN", fields.level);
    EXPECT_EQ("wardex", fields.source);
    EXPECT_EQ(R"(a"b/c\d)", fields.message);
}

TEST(LogRecords, TellsARecordThatWasCut)
{
    const auto fields = parseLogRecord(
        std::string(R"({"T":"1.0000", "P":"8", "C":"WARN", "S":"w", "M":"cut he)") + '\0');
    EXPECT_FALSE(fields.isWhole);
    EXPECT_EQ("cut he", fields.message);
}

TEST(LogRecords, TakesNothingFromWhatIsNoRecord)
{
    const auto fields = parseLogRecord("hello");
    EXPECT_FALSE(fields.isWhole);
    EXPECT_EQ("hello", fields.raw);
    EXPECT_EQ("", fields.message);
}

} // namespace orvo::test
