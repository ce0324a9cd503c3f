// A message on its road through the logger: formatted, made a record, sent to Redis as three
// commands, and taken out of the record by a JSON reader. It comes back equal, but for what is not
// printable, unless its record was cut.

#include "FuzzTarget.h"

#include "Claim.h"

#include "FallbackText.h"
#include "LogRecord.h"
#include "MessageFormat.h"
#include "RecordFrame.h"
#include "RedisHandles.h"
#include "logger/RedisLogger.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace
{

using namespace orvo::Logger;
using orvo::fuzz::claim;

/// Bytes of an input that choose level and time of the record.
constexpr std::size_t kChoices = 4;

struct ReaderDeleter
{
    void operator()(redisReader* reader) const { redisReaderFree(reader); }
};

std::string readable(std::string_view message)
{
    std::string text;
    for (const char byte : message)
    {
        text += std::isprint(static_cast<unsigned char>(byte)) != 0 ? byte : '#';
    }
    return text;
}

[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...)
{
    char message[kMessageCapacity];
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = formatMessage(message, format, arguments);
    va_end(arguments);
    claim(message[length] == '\0', "a message is terminated");
    return {message, length};
}

using Command = std::vector<std::string>;

/// The commands as a server reads them.
std::vector<Command> commandsIn(std::string_view wire)
{
    const std::unique_ptr<redisReader, ReaderDeleter> reader(redisReaderCreate());
    claim(redisReaderFeed(reader.get(), wire.data(), wire.size()) == REDIS_OK, "fed");
    std::vector<Command> commands;
    void* answer = nullptr;
    while (redisReaderGetReply(reader.get(), &answer) == REDIS_OK && answer != nullptr)
    {
        const RedisReply reply = takeReply(answer);
        claim(reply->type == REDIS_REPLY_ARRAY, "a command is an array");
        Command& words = commands.emplace_back();
        for (std::size_t at = 0; at < reply->elements; ++at)
        {
            words.emplace_back(reply->element[at]->str, reply->element[at]->len);
        }
    }
    return commands;
}

void judgeWhole(const std::string& record, std::string_view message, std::uint32_t level)
{
    const char* end = nullptr;
    const Json json(cJSON_ParseWithOpts(record.c_str(), &end, 1));
    claim(cJSON_IsObject(json.get()) != 0 && cJSON_GetArraySize(json.get()) == 5,
          "a record is an object of five");
    const auto field = [&](const char* name)
    {
        const cJSON* value = cJSON_GetObjectItemCaseSensitive(json.get(), name);
        claim(cJSON_IsString(value) != 0, "every value is a string");
        return std::string(value->valuestring);
    };
    claim(field("M") == readable(message), "the message comes back");
    claim(field("C") == levelName(level) && field("S") == "wardex" && field("P") == "4711",
          "so do level, source and process");
    claim(record.find('\n') == std::string::npos, "a record is one line");
}

void judgeRecord(std::string_view message, const timespec& time, std::uint32_t level)
{
    RecordText record;
    const std::size_t length = formatRecord({time, 4711, level, "wardex"}, message, record);
    static RecordFrame frame("LOG:ENTRIES");
    frame.take(record, length, static_cast<int>(time.tv_nsec) - 5);

    const std::string text(record.data(), length);
    const Command push{"RPUSH", "LOG:ENTRIES", text};
    const Command trim{"LTRIM", "LOG:ENTRIES",
                       "-" + std::to_string(static_cast<int>(time.tv_nsec) - 5), "-1"};
    const Command publication{"PUBLISH", "LOG:ENTRIES", text};
    claim(commandsIn(frame.whole()) == std::vector<Command>{push, trim, publication},
          "three commands, with the record as it is");
    if (length < kRecordCapacity)
    {
        judgeWhole(text, message, level);
        return;
    }
    claim(length == kRecordCapacity && text.find('\0') == kRecordCapacity - 1,
          "a cut record is 500 bytes with its terminator");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::uint8_t choice[kChoices] = {};
    std::memcpy(choice, data, std::min(size, kChoices));
    const std::string text(data + std::min(size, kChoices), data + size);
    const std::uint32_t level = choice[0];
    const timespec time{choice[1] * 16777216L + choice[2], choice[3] * 3906250L};

    const std::string message = formatted("%s", text.c_str());
    const std::string expected = std::string(text.c_str()).substr(0, kMessageCapacity - 1);
    claim(message == expected, "formatted as it is, up to its capacity");
    const std::string longer = formatted("%s: (%s, %d) %5.1f%%", text.c_str(), "x", level, 0.5);
    const std::string wanted = expected + ": (x, " + std::to_string(level) + ")   0.5%";
    claim(longer == wanted.substr(0, kMessageCapacity - 1), "the C library formats the rest");

    judgeRecord(message, time, level);
    judgeRecord(text, time, level); // ready-made, zero bytes and all
    claim(asFormatted(text.c_str()).size() <= std::strlen(text.c_str()), "no text grows");
    return 0;
}
