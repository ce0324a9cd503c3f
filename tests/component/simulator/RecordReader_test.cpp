#include "ChildProcess.h"
#include "Eventually.h"
#include "Files.h"
#include "RedisClient.h"
#include "RedisServer.h"
#include "logger/LogDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::test
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RecordReader : public testing::Test
{
protected:
    static constexpr char kOutput[] = "/tmp/output";
    static constexpr int kBoundMs = 10000;

    void start(std::vector<std::string> words)
    {
        words.insert(words.begin(), peer("record-reader"));
        m_reader = std::make_unique<ChildProcess>(words, kOutput);
    }

    int status(const std::vector<std::string>& words)
    {
        start(words);
        EXPECT_TRUE(m_reader->waitForEnd(kBoundMs));
        return m_reader->exitStatus();
    }

    void push(const std::string& record)
    {
        RedisClient(Logger::kLogSocket).command({"RPUSH", Logger::kLogList, record});
    }

    /// How many listen for configurations at this server.
    static long long listeners(const char* socket)
    {
        const RedisAnswer answer =
            RedisClient(socket).command({"PUBSUB", "NUMSUB", Logger::kConfigChannel});
        return answer.elements.at(1).number;
    }

    RedisServer m_cache{Logger::kLogSocket};
    std::unique_ptr<ChildProcess> m_reader;
};

TEST_F(RecordReader, PrintsEachRecordInALineWithoutLoss)
{
    push("a\nb");
    push(std::string("cut\0", 4));
    EXPECT_EQ(0, status({}));
    EXPECT_THAT(linesOf(kOutput), ElementsAre("\"a\\u000ab\"", "\"cut\\u0000\""));
}

TEST_F(RecordReader, LeavesTheListAsItIs)
{
    push("a");
    EXPECT_EQ(0, status({"-g", "b"}));
    EXPECT_THAT(linesOf(kOutput), IsEmpty());
    EXPECT_EQ(1, RedisClient(Logger::kLogSocket).command({"LLEN", Logger::kLogList}).number);
}

TEST_F(RecordReader, FollowsWhatComes)
{
    push("a");
    start({"-f"});
    ASSERT_TRUE(eventually([] { return linesOf(kOutput).size() == 1; }));
    push("b");
    push("c");
    ASSERT_TRUE(eventually([] { return linesOf(kOutput).size() == 3; }));
    EXPECT_THAT(linesOf(kOutput), ElementsAre("\"a\"", "\"b\"", "\"c\""));
    EXPECT_TRUE(m_reader->isRunning());
}

TEST_F(RecordReader, DoesNotHearConfigurationsAndSoAnnouncesNone)
{
    const RedisServer store(Logger::kConfigSocket);
    start({"-f"});
    ASSERT_TRUE(eventually([] { return listeners(Logger::kConfigSocket) == 1; }));
    push("a");
    ASSERT_TRUE(eventually([] { return linesOf(kOutput).size() == 1; }));
    EXPECT_EQ(0, listeners(Logger::kLogSocket));
}

TEST_F(RecordReader, WaitsForRedisWhenItFollows)
{
    m_cache.stop();
    start({"-f"});
    ASSERT_TRUE(eventually([] { return linesOf(kOutput).size() == 1; }));
    EXPECT_EQ("record-reader: Redis does not answer: No such file or directory",
              linesOf(kOutput).front());
    m_cache.restart();
    push("a");
    EXPECT_TRUE(eventually([] { return linesOf(kOutput).back() == "\"a\""; }));
}

TEST_F(RecordReader, EndsWhenNobodyReadsItsOutput)
{
    ASSERT_EQ(0, mkfifo("/tmp/pipe", 0600));
    const int end = open("/tmp/pipe", O_RDWR | O_CLOEXEC);
    ChildProcess piped({"sh", "-c", "exec " + peer("record-reader") + " -f >/tmp/pipe"});
    push("a");
    char byte = 0;
    ASSERT_EQ(1, read(end, &byte, 1));
    EXPECT_TRUE(piped.isRunning());
    close(end);
    EXPECT_TRUE(piped.waitForEnd(kBoundMs));
    EXPECT_EQ(0, piped.exitStatus());
}

TEST_F(RecordReader, SaysThatRedisDoesNotAnswer)
{
    m_cache.stop();
    EXPECT_EQ(69, status({}));
    EXPECT_THAT(linesOf(kOutput),
                ElementsAre("record-reader: Redis does not answer: No such file or directory"));
}

TEST_F(RecordReader, AnswersWrongWordsWithTheRightOnes)
{
    EXPECT_EQ(64, status({"--level", "LOUD"}));
    EXPECT_THAT(contentOf(kOutput), HasSubstr("no level is called 'LOUD': say one of DEBUG, DIAG"));
    EXPECT_EQ(0, status({"--help"}));
    EXPECT_THAT(contentOf(kOutput), HasSubstr("Usage: record-reader [-f] [--level LEVEL]"));
}

} // namespace orvo::test
