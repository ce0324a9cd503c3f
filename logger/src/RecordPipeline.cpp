#include "RecordPipeline.h"

#include "RecordFrame.h"
#include "RedisHandles.h"
#include "logger/LogDefaults.h"

#include <cstdio>

namespace orvo::Logger
{

namespace
{

constexpr char kFunctionName[] = "redisPushLog";
constexpr int kAnswers = 3;

bool append(redisContext* connection, std::string_view commands)
{
    return redisAppendFormattedCommand(connection, commands.data(), commands.size()) == REDIS_OK;
}

/// One by one, to tell the command for which there is no memory.
[[gnu::cold]] void complainOfCommand(redisContext* connection, const RecordFrame& frame,
                                     const char* key, const char* record)
{
    const bool isPushed = append(connection, frame.push());
    if (isPushed && !append(connection, frame.trim()))
    {
        // Neither the range nor the number is what was sent: the operators' log filters know the
        // text like this.
        std::fprintf(stderr, "%s: LTRIM %s 0 %d failed!\n", kFunctionName, key, kDefaultMaxEntries);
    }
    else if (isPushed && !append(connection, frame.publication()))
    {
        std::fprintf(stderr, "%s: PUBLISH %s %s failed!\n", kFunctionName, key, record);
    }
    else
    {
        // Also when there is memory again by now. The filters know it by the other command's name.
        std::fprintf(stderr, "%s: LPUSH %s %s failed!\n", kFunctionName, key, record);
    }
}

/// Stands for every answer, so that none is built only to be freed.
void* anyAnswer()
{
    static redisReply answer{};
    return &answer;
}

/// What hiredis calls to build the parts of an answer.
redisReplyObjectFunctions& answerBuilders()
{
    static redisReplyObjectFunctions builders = []
    {
        redisReplyObjectFunctions made{};
        made.createString = [](const redisReadTask*, char*, std::size_t)
        {
            return anyAnswer();
        };
        // The type of the count depends on hiredis' version.
        made.createArray = [](const redisReadTask*, auto)
        {
            return anyAnswer();
        };
        made.createInteger = [](const redisReadTask*, long long)
        {
            return anyAnswer();
        };
        made.createNil = [](const redisReadTask*)
        {
            return anyAnswer();
        };
        made.freeObject = [](void*) {
        };
        return made;
    }();
    return builders;
}

bool readAnswers(redisContext* connection)
{
    redisReplyObjectFunctions* const formerBuilders = connection->reader->fn;
    connection->reader->fn = &answerBuilders();
    for (int answer = 0; answer < kAnswers; ++answer)
    {
        void* reply = nullptr;
        if (redisGetReply(connection, &reply) != REDIS_OK)
        {
            // The reader may hold half an answer, which only these builders may free.
            return false;
        }
    }
    connection->reader->fn = formerBuilders;
    return true;
}

} // namespace

bool writeRecord(redisContext* connection, const RecordFrame& frame, const std::string& listKey,
                 const RecordText& record)
{
    if (!append(connection, frame.whole()))
    {
        complainOfCommand(connection, frame, listKey.c_str(), record.data());
    }
    else if (readAnswers(connection))
    {
        return true;
    }
    std::fprintf(stderr, "%s: failed with err: (%d:%s)\n", kFunctionName, connection->err,
                 connection->errstr);
    return false;
}

} // namespace orvo::Logger
