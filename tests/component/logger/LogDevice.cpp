#include "LogDevice.h"
#include "Eventually.h"
#include "StreamCapture.h"

#include <algorithm>
#include <stdexcept>

#include <unistd.h>

namespace orvo::Logger
{

namespace
{

bool isAnnouncement(const std::string& message)
{
    return message.rfind("Applying new log configuration: ", 0) == 0;
}

/// Waits until a configuration that is being handled has been handled by every logger: making a
/// logger, even one that fails, takes the lock of them all.
void waitForTheLoggers()
{
    try
    {
        const RedisLogger failing("nobody", "/nonexistent", kLogList, false);
    }
    catch (const std::runtime_error&)
    {
        return;
    }
    ADD_FAILURE() << "there is a Redis server at /nonexistent";
}

} // namespace

void LogDevice::configure(const std::string& text)
{
    const std::size_t before = announcements().size();
    m_client.publishToListeners(kConfigChannel, text);
    ASSERT_TRUE(test::eventually([&] { return announcements().size() > before; })) << text;
    waitForTheLoggers();
}

void LogDevice::enableAllLevels()
{
    configure(R"({"source":"all","mask":255})");
}

std::vector<std::string> LogDevice::messages() const
{
    std::vector<std::string> texts = m_records.messages();
    texts.erase(std::remove_if(texts.begin(), texts.end(), isAnnouncement), texts.end());
    return texts;
}

std::vector<std::string> LogDevice::announcements() const
{
    std::vector<std::string> texts = m_records.messages();
    texts.erase(std::remove_if(texts.begin(), texts.end(),
                               [](const std::string& text) { return !isAnnouncement(text); }),
                texts.end());
    return texts;
}

void LoggerOnDevice::killRedis()
{
    // A thread whose subscription is still on its way would tell it in other words.
    ASSERT_EQ(1, m_client.publishToListeners(kConfigChannel, "{}"));
    const test::StreamCapture errors(STDERR_FILENO);
    m_cache.kill();
    ASSERT_TRUE(
        test::eventually([&] { return errors.text() == "Error: Server closed the connection\n"; }));
}

} // namespace orvo::Logger
