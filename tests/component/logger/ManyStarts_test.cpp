// A thousand lives of the configuration thread. It looks once a second whether it is to end; this
// program stands between it and libevent and makes a second of it a millisecond.

#include "Eventually.h"
#include "LogDevice.h"
#include "ProcessFigures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include <event2/event.h>

// The linker gives the logger the first; the other is libevent's own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C"
{
    int __real_event_add(event* event, const timeval* timeout);

    int __wrap_event_add(event* event, const timeval* timeout)
    {
        const timeval soon{0, 1000};
        return __real_event_add(event, timeout != nullptr ? &soon : nullptr);
    }
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace orvo::Logger
{

namespace
{

constexpr int kLives = 1000;

std::unique_ptr<RedisLogger> makeLogger()
{
    return std::make_unique<RedisLogger>("wardex", kLogSocket, kLogList, false);
}

} // namespace

/// A device on which configurations arrive all the time.
class ManyStarts : public LogDevice
{
protected:
    ~ManyStarts() override
    {
        m_isOver = true;
        m_operating.join();
    }

    std::atomic<bool> m_isOver{false};
    test::RedisClient m_operator{kLogSocket};
    std::thread m_operating{
        [this]
        {
            while (!m_isOver)
            {
                m_operator.command(
                    {"PUBLISH", kConfigChannel, R"({"source":"all","mask":255,"max":100})"});
            }
        }};
};

TEST_F(ManyStarts, OfTheThreadEndInAsManyEndsWhateverArrivesMeanwhile)
{
    makeLogger().reset();
    const test::ProcessFigures before = test::ProcessFigures::now();
    for (int life = 0; life < kLives; ++life)
    {
        auto logger = makeLogger();
        EXPECT_LT(0, logger->log(WARN, "life %d", life));
        logger.reset();
    }
    EXPECT_TRUE(
        test::eventually([&] { return test::ProcessFigures::now().threads <= before.threads; }));
    EXPECT_EQ(before.descriptors, test::ProcessFigures::now().descriptors);
}

TEST_F(ManyStarts, OfOneLoggerAfterAnotherLeaveNobodyWithoutConfiguration)
{
    auto current = makeLogger();
    for (int life = 0; life < kLives; ++life)
    {
        std::thread ending([last = std::move(current)]() mutable { last.reset(); });
        current = makeLogger();
        EXPECT_LT(0, current->log(WARN, "life %d", life));
        ending.join();
    }
    EXPECT_TRUE(test::eventually([&] { return current->log(DEBUG, "heard") > 0; }));
}

} // namespace orvo::Logger
