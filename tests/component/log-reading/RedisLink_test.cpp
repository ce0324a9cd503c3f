#include "log-reading/RedisLink.h"

#include "RedisServer.h"
#include "logger/LogDefaults.h"

#include <gtest/gtest.h>

namespace orvo
{

TEST(RedisLinkTest, AnswersTextsAndNumbersAsTexts)
{
    const test::RedisServer server(Logger::kLogSocket);
    RedisLink link(Logger::kLogSocket);
    EXPECT_TRUE(link.answers());
    EXPECT_EQ("1", link.command({"HSET", "h", "a b", std::string("x\0y", 3)}));
    EXPECT_EQ(std::string("x\0y", 3), link.command({"HGET", "h", "a b"}));
    EXPECT_EQ(std::nullopt, link.command({"HGET", "h", "other"}));
    EXPECT_EQ("", link.complaint());
}

TEST(RedisLinkTest, KeepsWhatTheServerRefusesWith)
{
    const test::RedisServer server(Logger::kLogSocket);
    RedisLink link(Logger::kLogSocket);
    EXPECT_EQ(std::nullopt, link.command({"HSET"}));
    EXPECT_EQ("ERR wrong number of arguments for 'hset' command", link.complaint());
}

TEST(RedisLinkTest, TellsThatNoServerIsThere)
{
    RedisLink link("/tmp/none.sock");
    EXPECT_FALSE(link.answers());
    EXPECT_EQ("No such file or directory", link.complaint());
}

TEST(RedisLinkTest, GivesUpOnAServerThatHangs)
{
    const test::RedisServer server(Logger::kLogSocket);
    server.suspend();
    constexpr int kShortMs = 50;
    RedisLink link(Logger::kLogSocket, kShortMs);
    EXPECT_FALSE(link.answers());
    EXPECT_EQ("Resource temporarily unavailable", link.complaint());
    server.resume();
}

} // namespace orvo
