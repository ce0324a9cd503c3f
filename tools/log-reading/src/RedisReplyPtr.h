#pragma once

#include <memory>

#include <hiredis/hiredis.h>

namespace orvo
{

struct RedisReplyDeleter
{
    void operator()(redisReply* reply) const { freeReplyObject(reply); }
};
using RedisReplyPtr = std::unique_ptr<redisReply, RedisReplyDeleter>;

} // namespace orvo
