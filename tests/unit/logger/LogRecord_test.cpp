#include "LogRecord.h"

#include "logger/RedisLogger.h"

#include <gtest/gtest.h>

#include <string>

namespace orvo::Logger
{

namespace
{

std::string escaped(std::string_view message)
{
    EscapedText text;
    escapeMessage(message, text);
    return text.data();
}

std::string recordOf(const RecordOrigin& origin, std::string_view message)
{
    RecordText record;
    const std::size_t length = formatRecord(origin, message, record);
    return std::string(record.data(), length);
}

std::string stamp(time_t seconds, long nanoseconds)
{
    const std::string record = recordOf({{seconds, nanoseconds}, 1, WARN, "w"}, "");
    const std::string opening = R"({"T":")";
    return record.substr(opening.size(), record.find('"', opening.size()) - opening.size());
}

const RecordOrigin kOrigin{{12, 34567}, 817, WARN, "wardex"};
/// Length of a record of kOrigin with an empty message.
const std::size_t kFrameLength = recordOf(kOrigin, "").size();

} // namespace

TEST(LogRecord, HasItsFieldsInOrderAndAllAsTexts)
{
    EXPECT_EQ(R"({"T":"12.0000", "P":"817", "C":"WARN", "S":"wardex", "M":"the message"})",
              recordOf(kOrigin, "the message"));
}

TEST(LogRecord, CutsTheTimeToTenthsOfMilliseconds)
{
    EXPECT_EQ("12.0000", stamp(12, 34567));
    EXPECT_EQ("12.5000", stamp(12, 500000000));
    EXPECT_EQ("12.0000", stamp(12, 90000));
    EXPECT_EQ("12.0000", stamp(12, 99999));
    EXPECT_EQ("12.0001", stamp(12, 100000));
    EXPECT_EQ("0.9999", stamp(0, 999999999));
}

TEST(LogRecord, NamesEachLevel)
{
    EXPECT_STREQ("DEBUG", levelName(0x01));
    EXPECT_STREQ("DIAG", levelName(0x02));
    EXPECT_STREQ("TRACE", levelName(0x04));
    EXPECT_STREQ("INFO", levelName(0x08));
    EXPECT_STREQ("WARN", levelName(0x10));
    EXPECT_STREQ("ERROR", levelName(0x20));
    EXPECT_STREQ("FATAL", levelName(0x40));
    EXPECT_STREQ("EMERG", levelName(0x80));
}

TEST(LogRecord, NamesEveryOtherLevelUnknown)
{
    EXPECT_STREQ("UNKNOWN", levelName(0));
    EXPECT_STREQ("UNKNOWN", levelName(0x03));
    EXPECT_STREQ("UNKNOWN", levelName(0xff));
    EXPECT_STREQ("UNKNOWN", levelName(0x100));
    EXPECT_STREQ("UNKNOWN", levelName(0x80000010));
}

TEST(LogRecord, EscapesQuoteSolidusAndBackslash)
{
    EXPECT_EQ(R"(a\"b\/c\\d)", escaped(R"(a"b/c\d)"));
}

TEST(LogRecord, WritesAHashForEveryByteThatIsNotPrintable)
{
    EXPECT_EQ("a#b#c", escaped("a\nb\tc"));
    for (int value = 0; value < 256; ++value)
    {
        const char byte = static_cast<char>(value);
        std::string expected(1, byte);
        if (value < 0x20 || value > 0x7e)
        {
            expected = "#";
        }
        else if (byte == '"' || byte == '/' || byte == '\\')
        {
            expected = std::string("\\") + byte;
        }
        EXPECT_EQ(expected, escaped(std::string_view(&byte, 1))) << value;
    }
}

TEST(LogRecord, HasRoomForALongestMessageOfEscapedBytes)
{
    const std::string quotes(499, '"');
    EXPECT_EQ(998U, escaped(quotes).size());
}

TEST(LogRecord, TakesWhatFitsOfALongerMessage)
{
    // The room is 998 bytes; an escape is never split, so the last byte may stay free.
    EXPECT_EQ(std::string(997, 'x'), escaped(std::string(2000, 'x')).substr(0, 997));
    EXPECT_EQ('\\', escaped('x' + std::string(2000, '\\')).back());
    EXPECT_GE(998U, escaped('x' + std::string(2000, '\\')).size());
}

TEST(LogRecord, IsWholeUpTo499Characters)
{
    const std::string record = recordOf(kOrigin, std::string(499 - kFrameLength, 'x'));
    EXPECT_EQ(499U, record.size());
    EXPECT_EQ("x\"}", record.substr(496));
}

TEST(LogRecord, Is500BytesWithAZeroByteFrom500CharactersOn)
{
    const std::string record = recordOf(kOrigin, std::string(500 - kFrameLength, 'x'));
    EXPECT_EQ(500U, record.size());
    EXPECT_EQ(std::string("x\"\0", 3), record.substr(497));
}

TEST(LogRecord, Is500BytesForEveryLongerMessage)
{
    for (const std::size_t length : {499U, 600U, 100000U})
    {
        const std::string record = recordOf(kOrigin, std::string(length, 'x'));
        EXPECT_EQ(500U, record.size());
        EXPECT_EQ(std::string("xx\0", 3), record.substr(497));
        EXPECT_EQ(std::string::npos, record.substr(0, 499).find('\0'));
    }
}

TEST(LogRecord, MayBeCutAmidAnEscape)
{
    const std::string record = recordOf(kOrigin, std::string(499, '"'));
    EXPECT_EQ(500U, record.size());
    EXPECT_EQ('\0', record.back());
}

} // namespace orvo::Logger
