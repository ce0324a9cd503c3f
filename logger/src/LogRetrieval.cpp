#include "LogRetrieval.h"

#include "RedisHandles.h"
#include "logger/LogDefaults.h"

#include <cstdio>

namespace orvo::Logger
{

namespace
{

/// The blanks are part of the script: Redis caches scripts, and shows them to operators, by their
/// exact text.
constexpr char kFilterScript[] =
    // clang-format off
    "local entries=redis.call('LRANGE', '%s', '%d', '%d') \n"
    "                                         local b={};"
    "                                          for i=1,#entries do"
    "                                            local entry = entries[i];"
    "                                            if (%s) then"
    "                                              b[#b+1] = entry;"
    "                                            end;"
    "                                          end;"
    "                                          return b;";
// clang-format on

/// The texts of an array reply in their order; nothing of any other reply. A record may contain a
/// zero byte, so its length counts.
std::vector<std::string> textsOf(const redisReply* reply)
{
    std::vector<std::string> texts;
    if (reply == nullptr || reply->type != REDIS_REPLY_ARRAY)
    {
        return texts;
    }
    texts.reserve(reply->elements);
    for (std::size_t index = 0; index < reply->elements; ++index)
    {
        const redisReply* element = reply->element[index];
        // A condition is code and can put other things than records into the answer.
        if (element->type == REDIS_REPLY_STRING)
        {
            texts.emplace_back(element->str, element->len);
        }
    }
    return texts;
}

bool isError(const RedisReply& reply)
{
    return reply != nullptr && reply->type == REDIS_REPLY_ERROR;
}

} // namespace

std::vector<std::string> readEntries(redisContext* connection, const std::string& listKey,
                                     int first, int last)
{
    const RedisReply reply =
        takeReply(redisCommand(connection, "LRANGE %s %d %d", listKey.c_str(), first, last));
    if (isError(reply))
    {
        std::fprintf(stderr, "%s: %s(LRANGE %s %d %d)", "getLogEntries", reply->str,
                     listKey.c_str(), first, last);
    }
    return textsOf(reply.get());
}

std::vector<std::string> readFilteredEntries(redisContext* connection, const std::string& listKey,
                                             int first, int last, const std::string& condition)
{
    const std::size_t zero = condition.find('\0');
    if (zero != std::string::npos)
    {
        // What stands before it could be a condition, too, and mean something else.
        std::fprintf(stderr, "getLogEntriesFiltered: condition has a zero byte at %zu\n", zero);
        return {};
    }
    char script[kFilterScriptCapacity];
    const int length = std::snprintf(script, sizeof script, kFilterScript, listKey.c_str(), first,
                                     last, condition.c_str());
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof script)
    {
        // Cut at some byte the script could still be one, and mean something else.
        std::fprintf(stderr,
                     "getLogEntriesFiltered: script of %d bytes is too long (at most %zu)\n",
                     length, sizeof script - 1);
        return {};
    }
    const RedisReply reply =
        takeReply(redisCommand(connection, "EVAL %b 0", script, static_cast<std::size_t>(length)));
    if (isError(reply))
    {
        std::fprintf(stderr, "%s: %s(%s)\n", "getLogEntriesFiltered", reply->str, script);
    }
    return textsOf(reply.get());
}

int countEntries(redisContext* connection, const std::string& listKey)
{
    const RedisReply reply = takeReply(redisCommand(connection, "LLEN %s", listKey.c_str()));
    return reply != nullptr && reply->type == REDIS_REPLY_INTEGER ? static_cast<int>(reply->integer)
                                                                  : 0;
}

int clearEntries(redisContext* connection, const std::string& listKey)
{
    return takeReply(redisCommand(connection, "DEL %s", listKey.c_str())) != nullptr ? 1 : 0;
}

} // namespace orvo::Logger
