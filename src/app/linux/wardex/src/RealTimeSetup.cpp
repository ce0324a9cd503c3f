#include "RealTimeSetup.h"

#include "DevicePaths.h"
#include "ShellCommand.h"
#include "SupervisionLimits.h"
#include "logger/RedisLogger.h"

#include <cerrno>
#include <system_error>

#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

namespace orvo
{

namespace
{

std::string lastErrorText()
{
    return std::generic_category().message(errno);
}

} // namespace

void setUpRealTime(Logger::RedisLogger& logger)
{
    sched_param parameter{};
    parameter.sched_priority = kRealTimePriority;
    if (sched_setscheduler(getpid(), SCHED_FIFO, &parameter) != 0)
    {
        logger.log(Logger::WARN, "sched_setscheduler() failed: (%s)", lastErrorText().c_str());
    }
    if (mlockall(MCL_CURRENT | MCL_FUTURE) != 0)
    {
        logger.log(Logger::WARN, "mlockall() failed: (%s)", lastErrorText().c_str());
    }
    runInShell(kPanicCommand);
}

} // namespace orvo
