// Writes to the device's log, reads it back, and asks the quorl service.

#include "logger/LogDefaults.h"
#include "logger/LoggerFacade.h"
#include "logger/RedisLogger.h"
#include "quorl/Quorl.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using orvo::Logger::RedisLogger;

struct Free
{
    void operator()(char* text) const { std::free(text); }
};

void print(const char* title, const std::vector<std::string>& records)
{
    std::printf("%s:\n", title);
    for (const std::string& record : records)
    {
        // From "C" on; time and process id differ from run to run.
        std::printf("  %s\n", record.substr(record.find("\"C\"")).c_str());
    }
}

void writeAndRead()
{
    // Name of this program, server, list and channel, and: take the stored configuration.
    RedisLogger log("outside", orvo::Logger::kLogSocket, orvo::Logger::kLogList, true);

    log.clearLogEntries();
    log.log(orvo::Logger::WARN, "temperature %d of \"%s\"", 81, "/dev/sensor");
    log.log(orvo::Logger::INFO, "not written: the default mask begins at WARN");
    log.log(orvo::Logger::ERROR, "laser off");
    log.logOnce(orvo::Logger::WARN, "door open");
    log.logOnce(orvo::Logger::WARN, "door open");

    std::printf("%d records\n", log.getLogEntryCount());
    print("all", log.getLogEntries(0, -1));
    print("newest", log.getLogEntries(-1, -1));
    // The condition is Lua over `entry`; "true" as the last argument makes the text a plain one.
    print("errors",
          log.getLogEntriesFiltered(0, -1, R"(string.find(entry, '"C":"ERROR"', 1, true))"));
}

void askQuorl()
{
    char* text = nullptr;
    const std::int32_t length = quorl_getConfig("Bind-Address", &text);
    const std::unique_ptr<char, Free> value(text);
    std::printf("Bind-Address: %s (%d)\n", value ? value.get() : "none", length);
}

} // namespace

int main()
{
    try
    {
        writeAndRead();
    }
    catch (const std::runtime_error& error)
    {
        std::fprintf(stderr, "no log: %s\n", error.what());
        return EXIT_FAILURE;
    }
    askQuorl();

    // For code without a logger object of its own. Where such texts go is one mode of the process,
    // which the first question to quorl has set to Redis.
    orvo::Logger::loggerSetMode(orvo::Logger::LoggerStdout);
    orvo::Logger::loggerWrite(orvo::Logger::LoggerInfo, "done");
    orvo::Logger::loggerShutdown();
    return EXIT_SUCCESS;
}
