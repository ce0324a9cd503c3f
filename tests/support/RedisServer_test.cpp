#include "LogRecords.h"
#include "RedisClient.h"
#include "RedisServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace orvo::test
{

namespace
{
constexpr char kSocket[] = "/tmp/redis-test.sock";
}

TEST(RedisServer, AnswersAndKeepsWhatItIsGiven)
{
    const RedisServer server(kSocket);
    RedisClient client(kSocket);
    EXPECT_EQ(2, client.command({"RPUSH", "list", "a", "b"}).number);
    EXPECT_EQ("b", client.command({"LINDEX", "list", "-1"}).text);
}

TEST(RedisServer, LeavesItsSocketFileBehindWhenKilled)
{
    RedisServer server(kSocket);
    server.kill();
    EXPECT_EQ(0, access(kSocket, F_OK));
    EXPECT_FALSE(RedisClient(kSocket).command({"PING"}).isAnswered);
}

TEST(RedisServer, StartsEmptyAgain)
{
    RedisServer server(kSocket);
    RedisClient(kSocket).command({"SET", "key", "value"});
    server.restart();
    EXPECT_EQ("", RedisClient(kSocket).command({"GET", "key"}).text);
    EXPECT_EQ("PONG", RedisClient(kSocket).command({"PING"}).text);
}

TEST(RedisServer, GoesWithItsOwner)
{
    pid_t pid = -1;
    {
        const RedisServer server(kSocket);
        pid = server.pid();
    }
    EXPECT_EQ(-1, ::kill(pid, 0));
    EXPECT_EQ(-1, access(kSocket, F_OK));
}

TEST(RedisClient, HearsWhatIsPublished)
{
    const RedisServer server(kSocket);
    RedisClient listener(kSocket);
    listener.subscribe("channel");
    EXPECT_EQ(1, RedisClient(kSocket).publishToListeners("channel", "text"));
    EXPECT_EQ("text", listener.nextMessage());
}

TEST(LogRecords, CountsRecordsByLevelAndMessage)
{
    const RedisServer server(kSocket);
    const LogRecords records(kSocket, "list");
    RedisClient(kSocket).command({"RPUSH", "list",
                                  R"({"T":"1.0000", "P":"8", "C":"WARN", "S":"w", "M":"one"})",
                                  R"({"T":"1.0001", "P":"8", "C":"ERROR", "S":"w", "M":"two"})",
                                  R"({"T":"1.0002", "P":"8", "C":"ERROR", "S":"w", "M":"two"})"});
    EXPECT_TRUE(records.expectOnce("WARN", "one"));
    EXPECT_FALSE(records.expectOnce("ERROR", "two"));
    EXPECT_FALSE(records.expectOnce("ERROR", "one"));
    EXPECT_THAT(records.messages("ERROR"), testing::ElementsAre("two", "two"));
    EXPECT_THAT(records.messages(), testing::SizeIs(3));
    EXPECT_TRUE(records.waitFor("WARN", "one"));
    EXPECT_FALSE(records.waitFor("WARN", "two", 5));
    records.clear();
    EXPECT_THAT(records.all(), testing::IsEmpty());
}

} // namespace orvo::test
