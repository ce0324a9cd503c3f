#pragma once

#include "logger/LogDefaults.h"

#include <hiredis/async.h>
#include <hiredis/hiredis.h>

#include <event2/event.h>

#include <cjson/cJSON.h>

#include <memory>

namespace orvo::Logger
{

struct RedisContextDeleter
{
    void operator()(redisContext* context) const { redisFree(context); }
};
/// A synchronous connection to Redis.
using RedisConnection = std::unique_ptr<redisContext, RedisContextDeleter>;

/// Bounds every wait on a connection: a server that stands still must not take its callers along.
/// Setting it fails for values out of range only.
inline void limitPatience(redisContext* connection)
{
    (void)redisSetTimeout(connection, timeval{kAnswerPatienceSeconds, 0});
}

struct RedisReplyDeleter
{
    void operator()(redisReply* reply) const { freeReplyObject(reply); }
};
using RedisReply = std::unique_ptr<redisReply, RedisReplyDeleter>;

/// Takes what redisCommand answers, which has no type; null when the command got no answer.
inline RedisReply takeReply(void* reply)
{
    return RedisReply(static_cast<redisReply*>(reply));
}

struct RedisAsyncContextDeleter
{
    void operator()(redisAsyncContext* context) const { redisAsyncFree(context); }
};
using RedisAsyncConnection = std::unique_ptr<redisAsyncContext, RedisAsyncContextDeleter>;

struct EventBaseDeleter
{
    void operator()(event_base* base) const { event_base_free(base); }
};
using EventBase = std::unique_ptr<event_base, EventBaseDeleter>;

struct EventDeleter
{
    void operator()(event* timer) const { event_free(timer); }
};
using Event = std::unique_ptr<event, EventDeleter>;

struct JsonDeleter
{
    void operator()(cJSON* json) const { cJSON_Delete(json); }
};
using Json = std::unique_ptr<cJSON, JsonDeleter>;

} // namespace orvo::Logger
