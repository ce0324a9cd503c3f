#include "LogRecord.h"

#include "logger/RedisLogger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <cctype>
#include <climits>
#include <cstdio>

// The record is put together by hand; here the C library's formatting is the judge.

namespace orvo::Logger
{

namespace
{

std::string escapedByTheBook(const std::string& message)
{
    std::string text;
    for (const char byte : message)
    {
        if (std::isprint(static_cast<unsigned char>(byte)) == 0)
        {
            text += '#';
            continue;
        }
        text += (byte == '"' || byte == '/' || byte == '\\') ? std::string("\\") + byte
                                                             : std::string(1, byte);
    }
    return text;
}

std::string recordByTheBook(const RecordOrigin& origin, const std::string& message)
{
    char record[500];
    const int length = std::snprintf(
        record, sizeof record,
        "{\"T\":\"%ld.%4.4ld\", \"P\":\"%d\", \"C\":\"%s\", \"S\":\"%s\", \"M\":\"%s\"}",
        static_cast<long>(origin.time.tv_sec), static_cast<long>(origin.time.tv_nsec) / 100000,
        origin.pid, levelName(origin.level), origin.source, escapedByTheBook(message).c_str());
    return std::string(record, std::min<std::size_t>(static_cast<std::size_t>(length), 500));
}

std::string writtenRecord(const RecordOrigin& origin, const std::string& message)
{
    RecordText record;
    record.fill('?');
    const std::size_t length = formatRecord(origin, message, record);
    EXPECT_EQ('\0', record[std::min<std::size_t>(length, 499)]);
    return std::string(record.data(), length);
}

class RecordReference : public testing::Test
{
protected:
    long number(long least, long most)
    {
        return std::uniform_int_distribution<long>(least, most)(m_random);
    }
    std::string text(std::size_t length, const std::string& alphabet)
    {
        std::string made;
        for (std::size_t index = 0; index < length; ++index)
        {
            const auto at = number(0, static_cast<long>(alphabet.size()) - 1);
            made += alphabet[static_cast<std::size_t>(at)];
        }
        return made;
    }
    /// Of any bytes, or mostly of those that are copied, or mostly of those that are escaped.
    std::string message()
    {
        std::string bytes;
        for (int byte = 0; byte < 256; ++byte)
        {
            bytes += static_cast<char>(byte);
        }
        const std::vector<std::string> alphabets{bytes, "abcdefghijklmnopqrstuvwxyz 0123456789/",
                                                 "\\\"/\n", "x"};
        const auto kind = static_cast<std::size_t>(number(0, 3));
        return text(static_cast<std::size_t>(number(0, 520)), alphabets[kind]);
    }

    std::mt19937 m_random{817}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same in each run
};

} // namespace

TEST_F(RecordReference, IsMetByRandomRecords)
{
    for (int round = 0; round < 20000; ++round)
    {
        const std::string source =
            text(static_cast<std::size_t>(number(0, round % 50 == 0 ? 600 : 20)), "wardex/\"%s");
        const RecordOrigin origin{
            {static_cast<time_t>(number(0, 1L << number(1, 30))), number(0, 999999999)},
            static_cast<int>(number(1, 1L << number(1, 22))),
            1U << number(0, 8),
            source.c_str()};
        const std::string written = message();
        ASSERT_EQ(recordByTheBook(origin, written), writtenRecord(origin, written)) << round;
    }
}

TEST_F(RecordReference, IsMetAtEachLengthAroundTheCut)
{
    for (std::size_t sourceLength = 0; sourceLength < 510; ++sourceLength)
    {
        const std::string source(sourceLength, 's');
        for (const char byte : {'x', '/', '\n'})
        {
            const RecordOrigin origin{{12, 34567}, 817, FATAL, source.c_str()};
            const std::string written(5, byte);
            ASSERT_EQ(recordByTheBook(origin, written), writtenRecord(origin, written))
                << sourceLength;
        }
    }
}

TEST_F(RecordReference, IsMetAtEachPlaceOfAnEscape)
{
    const RecordOrigin origin{{12, 34567}, 817, WARN, "wardex"};
    for (const char byte : {'"', '/', '\\', '\t', '\x80', '\0'})
    {
        for (std::size_t place = 0; place < 499; ++place)
        {
            std::string written(499, 'x');
            written[place] = byte;
            ASSERT_EQ(recordByTheBook(origin, written), writtenRecord(origin, written)) << place;
        }
    }
}

TEST_F(RecordReference, IsMetByNumbersThatNoDeviceHas)
{
    for (const long seconds : {LONG_MIN, -1L, 0L, 9L, 10L, 2147483647L, LONG_MAX})
    {
        for (const long nanoseconds :
             {LONG_MIN, -100000L, -99999L, 0L, 999999999L, 1000000000L, LONG_MAX})
        {
            for (const int pid : {INT_MIN, -1, 0, INT_MAX})
            {
                const RecordOrigin origin{
                    {static_cast<time_t>(seconds), nanoseconds}, pid, WARN, "w"};
                ASSERT_EQ(recordByTheBook(origin, "m"), writtenRecord(origin, "m"));
            }
        }
    }
}

} // namespace orvo::Logger
