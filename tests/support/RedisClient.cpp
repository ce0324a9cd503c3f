#include "RedisClient.h"

#include "Eventually.h"

#include <hiredis/hiredis.h>

namespace orvo::test
{

namespace
{

constexpr timeval kBound{10, 0};

struct ReplyDeleter
{
    void operator()(redisReply* reply) const { freeReplyObject(reply); }
};
using Reply = std::unique_ptr<redisReply, ReplyDeleter>;

RedisAnswer answerOf(const redisReply* reply)
{
    RedisAnswer answer;
    if (reply == nullptr)
    {
        return answer;
    }
    answer.isAnswered = true;
    answer.number = reply->integer;
    if (reply->str != nullptr)
    {
        answer.text.assign(reply->str, reply->len);
    }
    for (std::size_t index = 0; index < reply->elements; ++index)
    {
        answer.elements.push_back(answerOf(reply->element[index]));
    }
    return answer;
}

} // namespace

void RedisClient::Deleter::operator()(redisContext* context) const
{
    redisFree(context);
}

RedisClient::RedisClient(const std::string& socketPath)
    : m_context(redisConnectUnixWithTimeout(socketPath.c_str(), kBound))
{
    if (m_context->err == 0)
    {
        redisSetTimeout(m_context.get(), kBound);
    }
}

RedisClient::~RedisClient() = default;

RedisAnswer RedisClient::command(const std::vector<std::string>& words)
{
    if (m_context->err != 0)
    {
        return {};
    }
    std::vector<const char*> texts;
    std::vector<std::size_t> lengths;
    for (const std::string& word : words)
    {
        texts.push_back(word.data());
        lengths.push_back(word.size());
    }
    const Reply reply(static_cast<redisReply*>(redisCommandArgv(
        m_context.get(), static_cast<int>(words.size()), texts.data(), lengths.data())));
    return answerOf(reply.get());
}

void RedisClient::subscribe(const std::string& channel)
{
    command({"SUBSCRIBE", channel});
}

std::string RedisClient::nextMessage()
{
    void* raw = nullptr;
    redisGetReply(m_context.get(), &raw);
    const Reply reply(static_cast<redisReply*>(raw));
    const RedisAnswer answer = answerOf(reply.get());
    return answer.elements.size() == 3 ? answer.elements[2].text : std::string();
}

long long RedisClient::publishToListeners(const std::string& channel, const std::string& text)
{
    eventually([&] { return command({"PUBSUB", "NUMSUB", channel}).elements.at(1).number > 0; });
    return command({"PUBLISH", channel, text}).number;
}

} // namespace orvo::test
