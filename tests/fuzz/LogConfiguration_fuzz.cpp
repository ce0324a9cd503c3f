// A message on the channel LOGGER:CFG, applied to a logger of a program called "wardex" that then
// logs: a text as it was published or, when it begins with '*', a whole reply of the server.

#include "FuzzTarget.h"

#include "Claim.h"

#include "CrashPattern.h"
#include "LogConfiguration.h"
#include "RedisLoggerPimpl.h"
#include "SubscriptionMessage.h"

#include <csignal>
#include <cstring>
#include <string>

#include <unistd.h>

namespace
{

using namespace orvo::Logger;
using orvo::fuzz::claim;

constexpr char kSource[] = "wardex";
constexpr std::string_view kMessage = "fatal error on disk /dev/mtd4, code 17";

int g_raised = 0;

struct ReaderDeleter
{
    void operator()(redisReader* reader) const { redisReaderFree(reader); }
};

std::string bulk(const std::string& text)
{
    return "$" + std::to_string(text.size()) + "\r\n" + text + "\r\n";
}

std::string asReceived(const std::string& input)
{
    if (!input.empty() && input.front() == '*')
    {
        return input;
    }
    return "*3\r\n" + bulk("message") + bulk(kConfigChannel) + bulk(input);
}

void judge(const char* text)
{
    LogSettings settings;
    const ConfigVerdict verdict = readConfiguration(text, kSource, getpid(), settings);
    RedisLogger::RedisLoggerPimpl logger(kSource, {"", 0, "/nowhere"}, kLogList);

    g_raised = 0;
    const int taken = logger.applyConfiguration(text, true);
    claim(taken == (verdict == ConfigVerdict::Taken ? 1 : 0), "taken or not");
    claim(g_raised == 0 || !settings.segvRegex.empty(), "only a pattern crashes");
    claim(taken == 1 || (settings.mask == kDefaultMask && settings.segvRegex.empty() &&
                         settings.maxEntries == kDefaultMaxEntries),
          "what is not taken changes nothing");

    std::string reason;
    const bool mayCrash =
        !settings.segvRegex.empty() &&
        tryCrashPattern(settings.segvRegex, kMessage, reason) == CrashVerdict::Crash;
    g_raised = 0;
    claim(logger.redisPushLog(WARN, kMessage.data(), kMessage.size(), true) ==
              ((settings.mask & WARN) != 0 ? -1 : 0),
          "the message finds no server, and no more");
    claim(g_raised == (mayCrash ? 1 : 0), "the crash rule alone crashes");
}

} // namespace

/// Stands before the C library's: a crash by the crash rule is counted and survived.
extern "C" int raise(int number) noexcept
{
    claim(number == SIGSEGV, "the crash rule raises nothing else");
    ++g_raised;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string received = asReceived(std::string(data, data + size));
    const std::unique_ptr<redisReader, ReaderDeleter> reader(redisReaderCreate());
    (void)redisReaderFeed(reader.get(), received.data(), received.size());
    void* answer = nullptr;
    while (redisReaderGetReply(reader.get(), &answer) == REDIS_OK && answer != nullptr)
    {
        const RedisReply reply = takeReply(answer);
        if (const char* text = publishedText(reply.get()))
        {
            judge(text);
        }
    }
    return 0;
}
