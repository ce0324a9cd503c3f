// A device on which the configuration thread cannot come up: this program's own versions of two
// functions refuse on demand what the kernel and libevent refuse without resources.

#include "LogDevice.h"
#include "StreamCapture.h"

#include <gtest/gtest.h>

#include <atomic>

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

struct event_base;

namespace
{

std::atomic<bool> g_refusesThreads{false};
std::atomic<bool> g_refusesLoops{false};

} // namespace

// The linker gives the logger the first event loop; the other is libevent's own. The thread is
// asked for by the standard library, which finds this program's function first.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming,cert-dcl58-cpp)
extern "C"
{
    event_base* __real_event_base_new();

    event_base* __wrap_event_base_new()
    {
        return g_refusesLoops ? nullptr : __real_event_base_new();
    }

    int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                       void* argument)
    {
        using Create = decltype(&pthread_create);
        static const auto next = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
        return g_refusesThreads ? EAGAIN : next(thread, attributes, start, argument);
    }
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming,cert-dcl58-cpp)

namespace orvo::Logger
{

class RefusedThread : public LogDevice
{
protected:
    /// What the logger complains about while it is made, and whether it writes nevertheless.
    static std::string complaintOf(std::atomic<bool>& refusal)
    {
        const test::StreamCapture errors(STDERR_FILENO);
        refusal = true;
        RedisLogger logger("wardex", kLogSocket, kLogList, false);
        refusal = false;
        EXPECT_EQ(3, logger.log(WARN, "one"));
        return errors.text();
    }
};

TEST_F(RefusedThread, IsToldAndLeavesTheLoggerWithoutLiveConfigurationOnly)
{
    EXPECT_EQ("Error: Resource temporarily unavailable\n", complaintOf(g_refusesThreads));
}

TEST_F(RefusedThread, IsTriedAgainForTheNextFirstLogger)
{
    (void)complaintOf(g_refusesThreads);
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    enableAllLevels();
    EXPECT_EQ(3, logger.log(DEBUG, "two"));
}

TEST_F(RefusedThread, ThatHasNoLoopIsToldAndLeavesTheLoggerWithoutLiveConfigurationOnly)
{
    EXPECT_EQ("Error: no event loop\n", complaintOf(g_refusesLoops));
}

} // namespace orvo::Logger
