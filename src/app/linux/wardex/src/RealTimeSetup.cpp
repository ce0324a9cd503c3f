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

void warnOfFailure(Logger::RedisLogger* logger, const char* call)
{
    const int error = errno;
    if (logger->isEnabled(Logger::WARN))
    {
        logger->log(Logger::WARN, "%s() failed: (%s)", call,
                    std::generic_category().message(error).c_str());
    }
}

} // namespace

void setUpRealTime(Logger::RedisLogger& logger)
{
    sched_param parameter{};
    parameter.sched_priority = kRealTimePriority;
    if (sched_setscheduler(getpid(), SCHED_FIFO, &parameter) != 0)
    {
        warnOfFailure(&logger, "sched_setscheduler");
    }
    if (mlockall(MCL_CURRENT | MCL_FUTURE) != 0)
    {
        warnOfFailure(&logger, "mlockall");
    }
    runInShell(kPanicCommand);
}

} // namespace orvo
