#include "RecordPipeline.h"

#include "RedisHandles.h"
#include "logger/LogDefaults.h"

#include <cstdio>

namespace orvo::Logger
{

namespace
{

constexpr char kFunctionName[] = "redisPushLog";
constexpr int kAnswers = 3;

bool appendCommands(redisContext* connection, const std::string& listKey, int maxEntries,
                    const char* record, std::size_t length)
{
    const char* key = listKey.c_str();
    if (redisAppendCommand(connection, "RPUSH %s %b", key, record, length) != REDIS_OK)
    {
        // The operators' log filters know the text under the name of the other command.
        std::fprintf(stderr, "%s: LPUSH %s %s failed!\n", kFunctionName, key, record);
        return false;
    }
    if (redisAppendCommand(connection, "LTRIM %s -%d -1", key, maxEntries) != REDIS_OK)
    {
        // Same here: neither the range nor the number is what was sent.
        std::fprintf(stderr, "%s: LTRIM %s 0 %d failed!\n", kFunctionName, key, kDefaultMaxEntries);
        return false;
    }
    if (redisAppendCommand(connection, "PUBLISH %s %b", key, record, length) != REDIS_OK)
    {
        std::fprintf(stderr, "%s: PUBLISH %s %s failed!\n", kFunctionName, key, record);
        return false;
    }
    return true;
}

bool readAnswers(redisContext* connection)
{
    for (int answer = 0; answer < kAnswers; ++answer)
    {
        void* reply = nullptr;
        if (redisGetReply(connection, &reply) != REDIS_OK)
        {
            return false;
        }
        takeReply(reply);
    }
    return true;
}

} // namespace

bool writeRecord(redisContext* connection, const std::string& listKey, int maxEntries,
                 const char* record, std::size_t length)
{
    if (appendCommands(connection, listKey, maxEntries, record, length) && readAnswers(connection))
    {
        return true;
    }
    std::fprintf(stderr, "%s: failed with err: (%d:%s)\n", kFunctionName, connection->err,
                 connection->errstr);
    return false;
}

} // namespace orvo::Logger
