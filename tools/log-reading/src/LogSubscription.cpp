#include "log-reading/LogSubscription.h"

#include "RedisTimeout.h"
#include "logger/LogDefaults.h"

#include <utility>

#include <poll.h>

namespace orvo
{

namespace
{

/// A published message arrives as the array {"message", channel, bytes}.
constexpr std::size_t kMessageParts = 3;
constexpr std::size_t kBytesPart = 2;

bool isReadable(int descriptor)
{
    pollfd question{descriptor, POLLIN, 0};
    return poll(&question, 1, 0) > 0;
}

} // namespace

LogSubscription::LogSubscription(std::string socketPath) : m_socketPath(std::move(socketPath)) {}

LogSubscription::~LogSubscription() = default;

bool LogSubscription::subscribe()
{
    const timeval timeout = redisTimeout(kTimeoutMs);
    m_context.reset(redisConnectUnixWithTimeout(m_socketPath.c_str(), timeout));
    if (isLost())
    {
        return false;
    }
    redisSetTimeout(m_context.get(), timeout);
    const RedisReplyPtr reply(
        static_cast<redisReply*>(redisCommand(m_context.get(), "SUBSCRIBE %s", Logger::kLogList)));
    // A server that is still loading its data refuses.
    return reply != nullptr && reply->type == REDIS_REPLY_ARRAY;
}

int LogSubscription::descriptor() const
{
    return isLost() ? -1 : m_context->fd;
}

std::vector<std::string> LogSubscription::take()
{
    std::vector<std::string> records;
    while (!isLost())
    {
        void* answer = nullptr;
        if (redisGetReplyFromReader(m_context.get(), &answer) != REDIS_OK)
        {
            break;
        }
        const RedisReplyPtr reply(static_cast<redisReply*>(answer));
        if (reply == nullptr)
        {
            if (!isReadable(m_context->fd) || redisBufferRead(m_context.get()) != REDIS_OK)
            {
                break;
            }
            continue;
        }
        if (reply->type == REDIS_REPLY_ARRAY && reply->elements == kMessageParts &&
            reply->element[kBytesPart]->type == REDIS_REPLY_STRING)
        {
            records.emplace_back(reply->element[kBytesPart]->str, reply->element[kBytesPart]->len);
        }
    }
    return records;
}

bool LogSubscription::isLost() const
{
    return m_context == nullptr || m_context->err != 0;
}

std::string LogSubscription::complaint() const
{
    return m_context == nullptr ? "not connected" : std::string(m_context->errstr);
}

} // namespace orvo
