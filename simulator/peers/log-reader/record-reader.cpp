// Prints the records of the device it runs on, for ./run logs.

#include "common/Diagnostics.h"
#include "log-reader/ReaderOptions.h"
#include "log-reading/DeviceLog.h"
#include "observer/JsonLine.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <poll.h>
#include <unistd.h>

namespace
{

using namespace orvo;
using namespace orvo::simulator;

constexpr int kUsageStatus = 64;
constexpr int kNoRedisStatus = 69;
constexpr int kPeriodMs = 100;
constexpr char kUsage[] =
    "Usage: record-reader [-f] [--level LEVEL] [-g TEXT]\n"
    "Prints a JSON string in a line of its own for each record of the device's log.\n"
    "\n"
    "  -f             goes on with the records that come, until nobody reads any more\n"
    "  --level LEVEL  only this level and more serious ones\n"
    "  -g TEXT        only records whose message contains the text\n";

/// False when nobody reads our output any more.
bool print(const std::vector<std::string>& records)
{
    for (const std::string& record : records)
    {
        std::printf("%s\n", jsonText(record).c_str());
    }
    return std::fflush(stdout) == 0;
}

/// Rests between two looks; false when the reader has gone meanwhile.
bool isReaderThere()
{
    pollfd output{STDOUT_FILENO, 0, 0};
    return poll(&output, 1, kPeriodMs) == 0;
}

std::unique_ptr<DeviceLog> openLog(const std::string& condition, bool patient)
{
    bool isTold = false;
    do
    {
        try
        {
            return std::make_unique<DeviceLog>(condition);
        }
        catch (const std::exception& error)
        {
            if (!isTold)
            {
                complain(std::string("Redis does not answer: ") + error.what());
            }
            isTold = true;
        }
    } while (patient && isReaderThere());
    return nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    const ReaderOptions options = readerOptions({argv + 1, argv + argc});
    if (options.help)
    {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (!options.complaint.empty())
    {
        complain(options.complaint);
        return kUsageStatus;
    }
    const std::unique_ptr<DeviceLog> log = openLog(options.condition, options.follow);
    if (log == nullptr)
    {
        return kNoRedisStatus;
    }
    bool isRead = print(log->news());
    while (options.follow && isRead && isReaderThere())
    {
        const std::vector<std::string> records = log->news();
        if (log->isGapped())
        {
            complain("records are missing here: the list no longer has them");
        }
        isRead = print(records);
    }
    return 0;
}
