#include "LogDevice.h"

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <string>

#include <cctype>

namespace orvo::Logger
{

namespace
{

constexpr int kMessages = 2000;
constexpr std::size_t kRecordLimit = 500;

using Engine = std::mt19937;

int pick(Engine& engine, int last)
{
    return std::uniform_int_distribution<int>(0, last)(engine);
}

/// Bytes of every kind: mostly text, often what has to be escaped, sometimes anything at all.
std::string anyMessage(Engine& engine)
{
    constexpr char kEscaped[] = {'"', '/', '\\', '%'};
    const int kind = pick(engine, 3);
    std::string message(static_cast<std::size_t>(pick(engine, 520)) + 1, ' ');
    for (char& byte : message)
    {
        const int choice = kind == 3 ? 0 : pick(engine, 9);
        if (choice < kind)
        {
            byte = static_cast<char>(pick(engine, 255));
        }
        else if (choice < 4)
        {
            byte = kEscaped[pick(engine, 3)];
        }
        else
        {
            byte = static_cast<char>('a' + pick(engine, 25));
        }
    }
    return message;
}

/// What a reader of the record sees of a message.
std::string readable(const std::string& message)
{
    std::string text;
    for (const char byte : message)
    {
        text += std::isprint(static_cast<unsigned char>(byte)) != 0 ? byte : '#';
    }
    return text;
}

/// The message of a record as a JSON reader takes it; nothing when the record is no JSON.
std::optional<std::string> messageOf(const std::string& record)
{
    const char* end = nullptr;
    const std::unique_ptr<cJSON, decltype(&cJSON_Delete)> object(
        cJSON_ParseWithOpts(record.c_str(), &end, 1), cJSON_Delete);
    const cJSON* message = cJSON_GetObjectItemCaseSensitive(object.get(), "M");
    if (cJSON_IsString(message) == 0)
    {
        return std::nullopt;
    }
    return std::string(message->valuestring);
}

} // namespace

class AnyMessage : public LoggerOnDevice
{
protected:
    /// The record that a message became.
    std::string recordOf(const std::string& message)
    {
        EXPECT_EQ(static_cast<int>(message.size()),
                  m_logger.write(WARN, message.data(), message.size()));
        const std::vector<std::string> newest = m_logger.getLogEntries(-1, -1);
        return newest.size() == 1 ? newest.front() : "";
    }
};

TEST_F(AnyMessage, ComesBackThroughAJsonReaderUnlessItsRecordWasCut)
{
    Engine engine(20260817);
    int whole = 0;
    int cut = 0;
    for (int round = 0; round < kMessages; ++round)
    {
        const std::string message = anyMessage(engine);
        const std::string record = recordOf(message);
        if (record.size() < kRecordLimit)
        {
            EXPECT_EQ(readable(message), messageOf(record).value_or("no JSON: " + record));
            EXPECT_EQ(std::string::npos, record.find('\0'));
            ++whole;
        }
        else
        {
            EXPECT_EQ(kRecordLimit, record.size());
            EXPECT_EQ(kRecordLimit - 1, record.find('\0'));
            EXPECT_FALSE(messageOf(record));
            ++cut;
        }
    }
    // Neither kind is a matter of luck.
    EXPECT_LT(kMessages / 4, whole);
    EXPECT_LT(kMessages / 4, cut);
}

TEST_F(AnyMessage, OfOneByteComesBackThroughAJsonReader)
{
    for (int value = 0; value < 256; ++value)
    {
        const std::string message(1, static_cast<char>(value));
        EXPECT_EQ(readable(message), messageOf(recordOf(message)).value_or("no JSON")) << value;
    }
}

} // namespace orvo::Logger
