#include "log-reading/RedisLink.h"

#include "RedisTimeout.h"

namespace orvo
{

RedisLink::RedisLink(const std::string& socketPath, int timeoutMs)
    : m_context(redisConnectUnixWithTimeout(socketPath.c_str(), redisTimeout(timeoutMs)))
{
    if (m_context != nullptr && m_context->err == 0)
    {
        redisSetTimeout(m_context.get(), redisTimeout(timeoutMs));
    }
}

bool RedisLink::answers()
{
    return command({"PING"}).has_value();
}

std::string RedisLink::complaint() const
{
    if (m_context == nullptr)
    {
        return "out of memory";
    }
    return m_context->err != 0 ? std::string(m_context->errstr) : m_refusal;
}

std::optional<std::string> RedisLink::command(const std::vector<std::string>& words)
{
    if (m_context == nullptr || m_context->err != 0)
    {
        return std::nullopt;
    }
    std::vector<const char*> texts;
    std::vector<std::size_t> lengths;
    for (const std::string& word : words)
    {
        texts.push_back(word.data());
        lengths.push_back(word.size());
    }
    const RedisReplyPtr reply(static_cast<redisReply*>(redisCommandArgv(
        m_context.get(), static_cast<int>(words.size()), texts.data(), lengths.data())));
    if (reply == nullptr)
    {
        return std::nullopt;
    }
    switch (reply->type)
    {
    case REDIS_REPLY_STRING:
    case REDIS_REPLY_STATUS:
        return std::string(reply->str, reply->len);
    case REDIS_REPLY_INTEGER:
        return std::to_string(reply->integer);
    case REDIS_REPLY_ERROR:
        m_refusal.assign(reply->str, reply->len);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace orvo
