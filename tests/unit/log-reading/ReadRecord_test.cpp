#include "log-reading/ReadRecord.h"

#include <gtest/gtest.h>

namespace orvo
{

namespace
{
constexpr char kRecord[] =
    R"({"T":"1234.5678", "P":"321", "C":"WARN", "S":"wardex", "M":"Bello is dead!!!"})";
} // namespace

TEST(ReadRecordTest, HasEveryFieldOfARecord)
{
    const ReadRecord record = readRecord(kRecord);
    EXPECT_TRUE(record.isRecord);
    EXPECT_FALSE(record.isCut);
    EXPECT_EQ(12345678, record.time);
    EXPECT_DOUBLE_EQ(1234.5678, record.seconds());
    EXPECT_EQ("321", record.pid);
    EXPECT_EQ("WARN", record.level);
    EXPECT_EQ("wardex", record.source);
    EXPECT_EQ("Bello is dead!!!", record.message);
    EXPECT_EQ(kRecord, record.raw);
}

TEST(ReadRecordTest, UndoesTheEscapesOfTheMessage)
{
    EXPECT_EQ(R"(a"b/c\d)",
              readRecord(R"({"T":"1.0000", "P":"1", "C":"X", "S":"s", "M":"a\"b\/c\\d"})").message);
}

TEST(ReadRecordTest, TakesASourceWithQuotesAsItIs)
{
    EXPECT_EQ(R"(a "b")",
              readRecord(R"({"T":"1.0000", "P":"1", "C":"WARN", "S":"a "b"", "M":"m"})").source);
}

TEST(ReadRecordTest, MarksARecordThatWasCutAndKeepsItsText)
{
    std::string raw = R"({"T":"1.0000", "P":"1", "C":"WARN", "S":"s", "M":"a long mess)";
    raw += '\0';
    const ReadRecord record = readRecord(raw);
    EXPECT_TRUE(record.isRecord);
    EXPECT_TRUE(record.isCut);
    EXPECT_EQ("a long mess", record.message);
}

TEST(ReadRecordTest, DropsAnEscapeThatWasCutInTwo)
{
    const ReadRecord record =
        readRecord(std::string(R"({"T":"1.0000", "P":"1", "C":"WARN", "S":"s", "M":"door\)"));
    EXPECT_TRUE(record.isCut);
    EXPECT_EQ("door", record.message);
}

TEST(ReadRecordTest, KeepsForeignTextAsMessageWithoutWhatATerminalObeys)
{
    const ReadRecord record = readRecord("\033[2Jno record");
    EXPECT_FALSE(record.isRecord);
    EXPECT_EQ(-1, record.time);
    EXPECT_EQ("#[2Jno record", record.message);
}

TEST(ReadRecordTest, RefusesATimeThatIsNone)
{
    for (const char* time :
         {"", ".0000", "1.000", "1.00000", "x.0000", "1.00x0", "1,0000", "123456789012345.0000"})
    {
        const std::string raw =
            std::string(R"({"T":")") + time + R"(", "P":"1", "C":"WARN", "S":"s", "M":"m"})";
        EXPECT_FALSE(readRecord(raw).isRecord) << time;
    }
}

} // namespace orvo
