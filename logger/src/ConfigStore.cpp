#include "ConfigStore.h"

#include "logger/LogDefaults.h"

#include <cstdio>

namespace orvo::Logger
{

namespace
{

void tellProblem(const char* caller, const char* namedSocket)
{
    std::fprintf(stderr, "%s: Redis connection problem for connecting via %s\n", caller,
                 namedSocket);
}

std::optional<std::string> textOf(const RedisReply& reply)
{
    if (reply == nullptr || reply->type != REDIS_REPLY_STRING)
    {
        return std::nullopt;
    }
    return std::string(reply->str, reply->len);
}

} // namespace

RedisConnection openConfigStore(const char* caller, const char* namedSocket)
{
    RedisConnection store(redisConnectUnix(kConfigSocket));
    if (store == nullptr || store->err != 0)
    {
        tellProblem(caller, namedSocket);
        return nullptr;
    }
    limitPatience(store.get());
    return store;
}

std::optional<std::string> loadConfiguration(const std::string& field)
{
    // The message names the log's socket though the other one was tried; it is known like this.
    const RedisConnection store = openConfigStore("loadConfig", kLogSocket);
    if (store == nullptr)
    {
        return std::nullopt;
    }
    const RedisReply answer =
        takeReply(redisCommand(store.get(), "HGET %s %s", kConfigHash, field.c_str()));
    if (answer == nullptr)
    {
        tellProblem("loadConfig", kLogSocket);
    }
    return textOf(answer);
}

std::optional<std::string> storeConfiguration(redisContext* store, const std::string& field,
                                              const std::string& text)
{
    const RedisReply answer =
        takeReply(redisCommand(store, "HSET %s %s %s", kConfigHash, field.c_str(), text.c_str()));
    if (answer == nullptr)
    {
        tellProblem("saveConfig", kConfigSocket);
    }
    return textOf(answer);
}

} // namespace orvo::Logger
