#include "RecordFrame.h"

#include "RedisHandles.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include <climits>
#include <cstring>

// What hiredis makes of the three commands is the measure of the frame.

namespace orvo::Logger
{

namespace
{

template <typename... Arguments>
std::string madeByHiredis(const char* format, Arguments... arguments)
{
    char* command = nullptr;
    const int length = redisFormatCommand(&command, format, arguments...);
    EXPECT_GT(length, 0);
    std::string text(command, static_cast<std::size_t>(length));
    redisFreeCommand(command);
    return text;
}

void expectAsByHiredis(RecordFrame& frame, const std::string& key, const std::string& bytes,
                       int maxEntries)
{
    RecordText record;
    record.fill('?');
    std::memcpy(record.data(), bytes.data(), bytes.size());
    frame.take(record, bytes.size(), maxEntries);
    const std::string push = madeByHiredis("RPUSH %s %b", key.c_str(), bytes.data(), bytes.size());
    const std::string trim = madeByHiredis("LTRIM %s -%d -1", key.c_str(), maxEntries);
    const std::string publication =
        madeByHiredis("PUBLISH %s %b", key.c_str(), bytes.data(), bytes.size());
    ASSERT_EQ(push, frame.push());
    ASSERT_EQ(trim, frame.trim());
    ASSERT_EQ(publication, frame.publication());
    ASSERT_EQ(push + trim + publication, frame.whole());
}

} // namespace

TEST(RecordFrame, HoldsTheThreeCommandsBackToBack)
{
    RecordFrame frame("L");
    RecordText record{'a', 'b'};
    frame.take(record, 2, 7);
    EXPECT_EQ("*3\r\n$5\r\nRPUSH\r\n$1\r\nL\r\n$2\r\nab\r\n"
              "*4\r\n$5\r\nLTRIM\r\n$1\r\nL\r\n$2\r\n-7\r\n$2\r\n-1\r\n"
              "*3\r\n$7\r\nPUBLISH\r\n$1\r\nL\r\n$2\r\nab\r\n",
              frame.whole());
}

TEST(RecordFrame, IsWhatHiredisMakesOfRecordsOfEachLength)
{
    RecordFrame frame("LOG:ENTRIES");
    for (std::size_t length = 0; length <= kRecordCapacity; ++length)
    {
        expectAsByHiredis(frame, "LOG:ENTRIES", std::string(length, 'r'), 10000);
        expectAsByHiredis(frame, "LOG:ENTRIES", std::string(kRecordCapacity - length, '\0'), 10000);
    }
}

TEST(RecordFrame, IsWhatHiredisMakesOfEachMaximum)
{
    RecordFrame frame("LOG:ENTRIES");
    for (const int maxEntries : {INT_MIN, INT_MIN + 1, -5, -1, 0, 1, 9, 10, 99999999, 100000000,
                                 999999999, 1000000000, INT_MAX, 3})
    {
        expectAsByHiredis(frame, "LOG:ENTRIES", "record", maxEntries);
        expectAsByHiredis(frame, "LOG:ENTRIES", std::string(kRecordCapacity, 'r'), maxEntries);
    }
}

TEST(RecordFrame, IsWhatHiredisMakesOfStrangeKeys)
{
    for (const std::string& key :
         {std::string(), std::string("a key with blanks"), std::string("%s %b\r\n"),
          std::string("\xff\x01\"\\"), std::string("cut\0here", 8), std::string("\0", 1),
          std::string(9, 'k'), std::string(10, 'k'), std::string(100000, 'k')})
    {
        RecordFrame frame(key);
        expectAsByHiredis(frame, key, "record", 10000);
        expectAsByHiredis(frame, key, "record", INT_MIN);
    }
}

TEST(RecordFrame, IsWhatHiredisMakesOfAnyBytes)
{
    std::mt19937 random{817}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bytes in each run
    RecordFrame frame("LOG:ENTRIES");
    for (int round = 0; round < 2000; ++round)
    {
        std::string bytes(random() % (kRecordCapacity + 1), '\0');
        for (char& byte : bytes)
        {
            byte = static_cast<char>(random());
        }
        expectAsByHiredis(frame, "LOG:ENTRIES", bytes, static_cast<int>(random()));
    }
}

} // namespace orvo::Logger
