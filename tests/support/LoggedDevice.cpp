#include "LoggedDevice.h"

#include "RedisClient.h"

namespace orvo::test
{

LoggedDevice::LoggedDevice()
{
    RedisClient(store.socketPath())
        .command({"HSET", "LOG:PERM:CFG", "all", R"({"source":"all","mask":255})"});
}

std::vector<std::string> LoggedDevice::lines()
{
    std::vector<std::string> lines;
    for (const LogRecordFields& record : LogRecords().all())
    {
        if (record.level != "INFO")
        {
            lines.push_back(record.level + " " + record.message);
        }
    }
    return lines;
}

} // namespace orvo::test
