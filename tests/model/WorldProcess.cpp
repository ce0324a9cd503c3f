#include "WorldProcess.h"

#include "dbus-proxy/DbusTypes.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

namespace orvo::model
{

namespace
{

constexpr int kSignalled = 128;

[[noreturn]] void runWorldProcess(void (*installTime)(), int (*work)(void*), void* argument)
{
    // Deaf to the bus of the machine; the names of the program and of its records are the device's.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
    (void)setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    (void)setenv("TZ", "UTC", 1); // NOLINT(concurrency-mt-unsafe): one thread
    static char name[] = "wardex";
    program_invocation_short_name = name;
    installTime();
    int argc = 1;
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    registerDbusTypes();
    const int status = work(argument);
    std::fflush(nullptr);
    _exit(status);
}

} // namespace

pid_t startWorldProcess(void (*installTime)(), int (*work)(void*), void* argument)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        runWorldProcess(installTime, work, argument);
    }
    if (child < 0)
    {
        std::perror("model: no process for a world");
        std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): one thread
    }
    return child;
}

int endOfProcess(int waitStatus)
{
    return WIFSIGNALED(waitStatus) ? kSignalled + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

} // namespace orvo::model
