#include "SubscriptionMessage.h"

#include "logger/Subscription.h"

#include <hiredis/hiredis.h>

#include <cstring>

namespace orvo::Logger
{

namespace
{

constexpr std::size_t kMessageElements = 3;
constexpr std::size_t kKindElement = 0;
constexpr std::size_t kTextElement = 2;

bool isText(const redisReply* element)
{
    return element != nullptr && element->type == REDIS_REPLY_STRING;
}

} // namespace

const char* publishedText(const redisReply* reply)
{
    if (reply == nullptr || reply->type != REDIS_REPLY_ARRAY || reply->elements != kMessageElements)
    {
        return nullptr;
    }
    const redisReply* kind = reply->element[kKindElement];
    const redisReply* text = reply->element[kTextElement];
    if (!isText(kind) || std::strcmp(kind->str, "message") != 0 || !isText(text))
    {
        return nullptr;
    }
    return text->str;
}

void subCallback(redisAsyncContext* /*context*/, void* reply, void* privateData)
{
    const auto* consumer = static_cast<const TextConsumer*>(privateData);
    const char* text = publishedText(static_cast<const redisReply*>(reply));
    if (text != nullptr && consumer != nullptr && *consumer)
    {
        (*consumer)(text);
    }
}

} // namespace orvo::Logger
