#include "ScriptedRedis.h"

#include "RedisClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test
{

namespace
{

constexpr char kScriptedSocket[] = "/tmp/redis-test.sock";

ScriptedAnswer answer(const std::vector<std::string>& command)
{
    if (command[0] == "HALF")
    {
        return {"$10\r\nhal", true};
    }
    return {command[0] == "GET" ? "$5\r\nvalue\r\n" : "-ERR no\r\n", false};
}

} // namespace

TEST(ScriptedRedis, AnswersByItsScript)
{
    const ScriptedRedis server(kScriptedSocket, answer);
    RedisClient client(kScriptedSocket);
    EXPECT_EQ("value", client.command({"GET", "key"}).text);
    EXPECT_EQ("ERR no", client.command({"DEL", "key", ""}).text);
    EXPECT_THAT(server.commands(), testing::ElementsAre("GET key", "DEL key "));
}

TEST(ScriptedRedis, HangsUpAmidAnAnswer)
{
    const ScriptedRedis server(kScriptedSocket, answer);
    RedisClient client(kScriptedSocket);
    EXPECT_FALSE(client.command({"HALF"}).isAnswered);
    EXPECT_EQ("value", RedisClient(kScriptedSocket).command({"GET", "key"}).text);
}

} // namespace orvo::test
