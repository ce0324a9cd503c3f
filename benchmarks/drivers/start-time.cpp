// Starts a program and tells what it takes from exec to owning the supervisor's bus name.
//
//   start-time PROGRAM
//
// Prints ms that have passed, then ms that a processor worked for it: all its threads, the kernel's
// work included, its children not. The program is killed then.
#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace
{

constexpr const char* kRule = "type='signal',sender='org.freedesktop.DBus',"
                              "member='NameOwnerChanged',arg0='com.orvo.wardex'";
constexpr std::uint64_t kPatienceUs = 20'000'000;

int changed(sd_bus_message* message, void* owned, sd_bus_error* /*error*/)
{
    const char* name = nullptr;
    const char* before = nullptr;
    const char* owner = nullptr;
    sd_bus_message_read(message, "sss", &name, &before, &owner);
    *static_cast<bool*>(owned) = owner != nullptr && *owner != '\0';
    return 0;
}

void waitUntil(sd_bus* bus, const bool& owned)
{
    while (!owned)
    {
        const int done = sd_bus_process(bus, nullptr);
        if (done < 0 || (done == 0 && sd_bus_wait(bus, kPatienceUs) <= 0))
        {
            throw std::runtime_error("the name has no owner yet");
        }
    }
}

double milliseconds(clockid_t clock)
{
    timespec now{};
    if (clock_gettime(clock, &now) != 0)
    {
        throw std::runtime_error("the program has no clock any more");
    }
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

void startOnce(sd_bus* bus, const bool& owned, char* program)
{
    char* const words[] = {program, nullptr};
    pid_t child = 0;
    const double begin = milliseconds(CLOCK_MONOTONIC);
    if (posix_spawn(&child, program, nullptr, nullptr, words, environ) != 0)
    {
        throw std::runtime_error(program);
    }
    clockid_t work{};
    if (clock_getcpuclockid(child, &work) != 0)
    {
        throw std::runtime_error(program);
    }
    waitUntil(bus, owned);
    const double worked = milliseconds(work);
    std::printf("%.6f %.6f\n", milliseconds(CLOCK_MONOTONIC) - begin, worked);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2)
    {
        std::fputs("Usage: start-time PROGRAM\n", stderr);
        return EXIT_FAILURE;
    }
    try
    {
        sd_bus* bus = nullptr;
        bool owned = false;
        if (sd_bus_default_system(&bus) < 0 ||
            sd_bus_add_match(bus, nullptr, kRule, changed, &owned) < 0)
        {
            throw std::runtime_error("no system bus");
        }
        startOnce(bus, owned, argv[1]);
        sd_bus_unref(bus);
        return EXIT_SUCCESS;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "start-time: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
