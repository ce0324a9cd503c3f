#include "SubscriptionMessage.h"

#include "logger/Subscription.h"

#include <hiredis/hiredis.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvo::Logger
{

namespace
{

/// A reply as hiredis hands it to a callback.
class ArrayReply
{
public:
    explicit ArrayReply(std::vector<std::string> texts) : m_texts(std::move(texts))
    {
        for (std::string& text : m_texts)
        {
            redisReply element{};
            element.type = REDIS_REPLY_STRING;
            element.str = text.data();
            element.len = text.size();
            m_elements.push_back(element);
        }
        for (redisReply& element : m_elements)
        {
            m_pointers.push_back(&element);
        }
        m_reply.type = REDIS_REPLY_ARRAY;
        m_reply.elements = m_pointers.size();
        m_reply.element = m_pointers.data();
    }
    ArrayReply(const ArrayReply&) = delete;
    ArrayReply& operator=(const ArrayReply&) = delete;

    redisReply* get() { return &m_reply; }
    redisReply& element(std::size_t index) { return m_elements[index]; }

private:
    std::vector<std::string> m_texts;
    std::vector<redisReply> m_elements;
    std::vector<redisReply*> m_pointers;
    redisReply m_reply{};
};

} // namespace

TEST(SubscriptionMessage, IsTheThirdElementOfAMessage)
{
    ArrayReply reply({"message", "channel", "text"});
    EXPECT_STREQ("text", publishedText(reply.get()));
}

TEST(SubscriptionMessage, IsNoneForAConfirmation)
{
    ArrayReply reply({"subscribe", "channel", ""});
    reply.element(2).type = REDIS_REPLY_INTEGER;
    EXPECT_EQ(nullptr, publishedText(reply.get()));
}

TEST(SubscriptionMessage, IsNoneForAnotherKindOrNumberOfElements)
{
    ArrayReply kind({"pmessage", "channel", "text"});
    ArrayReply shorter({"message", "channel"});
    ArrayReply longer({"message", "pattern", "channel", "text"});
    EXPECT_EQ(nullptr, publishedText(kind.get()));
    EXPECT_EQ(nullptr, publishedText(shorter.get()));
    EXPECT_EQ(nullptr, publishedText(longer.get()));
}

TEST(SubscriptionMessage, IsNoneWithoutTexts)
{
    ArrayReply kind({"message", "channel", "text"});
    kind.element(0).type = REDIS_REPLY_NIL;
    ArrayReply text({"message", "channel", "text"});
    text.element(2).type = REDIS_REPLY_INTEGER;
    EXPECT_EQ(nullptr, publishedText(kind.get()));
    EXPECT_EQ(nullptr, publishedText(text.get()));
}

TEST(SubscriptionMessage, IsNoneForAnErrorOrTheEndOfTheConnection)
{
    std::string text = "ERR";
    redisReply error{};
    error.type = REDIS_REPLY_ERROR;
    error.str = text.data();
    EXPECT_EQ(nullptr, publishedText(&error));
    EXPECT_EQ(nullptr, publishedText(nullptr));
}

TEST(SubscriptionCallback, HandsThePublishedTextOn)
{
    std::vector<std::string> heard;
    TextConsumer consumer = [&heard](const char* text)
    {
        heard.emplace_back(text);
    };
    ArrayReply reply({"message", "channel", "text"});
    subCallback(nullptr, reply.get(), &consumer);
    EXPECT_EQ(std::vector<std::string>{"text"}, heard);
}

TEST(SubscriptionCallback, HandsNothingElseOn)
{
    int calls = 0;
    TextConsumer consumer = [&calls](const char*)
    {
        ++calls;
    };
    ArrayReply reply({"subscribe", "channel", "1"});
    subCallback(nullptr, reply.get(), &consumer);
    subCallback(nullptr, nullptr, &consumer);
    EXPECT_EQ(0, calls);
}

TEST(SubscriptionCallback, DropsTheTextWhenNobodyRegistered)
{
    TextConsumer nobody;
    ArrayReply reply({"message", "channel", "text"});
    subCallback(nullptr, reply.get(), nullptr);
    subCallback(nullptr, reply.get(), &nobody);
    SUCCEED();
}

} // namespace orvo::Logger
