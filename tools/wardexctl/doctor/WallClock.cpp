#include "doctor/WallClock.h"

#include "doctor/ServerProcess.h"
#include "logger/LogDefaults.h"

#include <ctime>
#include <optional>

#include <sys/stat.h>

namespace orvo::ctl
{

namespace
{

double secondsOf(const timespec& time)
{
    constexpr double kPerSecond = 1e9;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / kPerSecond;
}

double now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return secondsOf(time);
}

} // namespace

std::optional<double> wallClockStep()
{
    const char* const socket = Logger::kLogSocket;
    struct stat state = {};
    const auto process = serverProcess(socket);
    const auto age = process ? ageOfProcess(*process) : std::nullopt;
    if (!age || ::stat(socket, &state) != 0)
    {
        return std::nullopt;
    }
    // The socket was made with the wall clock of then, the process has an age by the other one.
    return now(CLOCK_REALTIME) - secondsOf(state.st_mtim) - *age;
}

} // namespace orvo::ctl
