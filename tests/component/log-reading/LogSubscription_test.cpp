#include "log-reading/LogSubscription.h"

#include "Eventually.h"
#include "RedisClient.h"
#include "RedisServer.h"
#include "logger/LogDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo
{

using testing::ElementsAre;

class LogSubscriptionTest : public testing::Test
{
protected:
    void publish(const std::string& text) { m_client.command({"PUBLISH", "LOG:ENTRIES", text}); }

    std::vector<std::string> await(std::size_t count)
    {
        std::vector<std::string> all;
        test::eventually(
            [&]
            {
                const std::vector<std::string> news = m_subscription.take();
                all.insert(all.end(), news.begin(), news.end());
                return all.size() >= count;
            });
        return all;
    }

    test::RedisServer m_cache{Logger::kLogSocket};
    test::RedisClient m_client{Logger::kLogSocket};
    LogSubscription m_subscription{Logger::kLogSocket};
};

TEST_F(LogSubscriptionTest, HearsWhatIsPublishedOnceItIsConfirmedAndItsBytesAsTheyAre)
{
    EXPECT_TRUE(m_subscription.isLost());
    publish("before");
    ASSERT_TRUE(m_subscription.subscribe());
    publish("a");
    publish(std::string("b\0", 2));
    EXPECT_THAT(await(2), ElementsAre("a", std::string("b\0", 2)));
    EXPECT_FALSE(m_subscription.isLost());
}

TEST_F(LogSubscriptionTest, LosesNothingOfAFlood)
{
    constexpr int kFlood = 5000;
    ASSERT_TRUE(m_subscription.subscribe());
    for (int number = 0; number < kFlood; ++number)
    {
        publish(std::to_string(number));
    }
    const std::vector<std::string> heard = await(kFlood);
    ASSERT_EQ(static_cast<std::size_t>(kFlood), heard.size());
    for (int number = 0; number < kFlood; ++number)
    {
        ASSERT_EQ(std::to_string(number), heard[static_cast<std::size_t>(number)]);
    }
}

TEST_F(LogSubscriptionTest, TellsThatTheServerWentAwayAndSubscribesAgain)
{
    ASSERT_TRUE(m_subscription.subscribe());
    m_cache.kill();
    ASSERT_TRUE(test::eventually(
        [&]
        {
            m_subscription.take();
            return m_subscription.isLost();
        }));
    EXPECT_EQ(-1, m_subscription.descriptor());
    EXPECT_FALSE(m_subscription.subscribe());
    EXPECT_EQ("Connection refused", m_subscription.complaint());
    m_cache.restart();
    EXPECT_TRUE(m_subscription.subscribe());
}

} // namespace orvo
