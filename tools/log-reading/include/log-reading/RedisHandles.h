#pragma once

#include <memory>

#include <hiredis/hiredis.h>

namespace orvo
{

struct RedisContextDeleter
{
    void operator()(redisContext* context) const { redisFree(context); }
};
using RedisContextPtr = std::unique_ptr<redisContext, RedisContextDeleter>;

struct RedisReplyDeleter
{
    void operator()(redisReply* reply) const { freeReplyObject(reply); }
};
using RedisReplyPtr = std::unique_ptr<redisReply, RedisReplyDeleter>;

} // namespace orvo
