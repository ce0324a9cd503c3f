#pragma once

#include <cstdio>
#include <cstdlib>

#include <ctime>

namespace bench
{

/// Times of a measured program; both in seconds.
inline double secondsOf(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}
/// As it passes for everybody: where a server takes part.
inline double wallSeconds()
{
    return secondsOf(CLOCK_MONOTONIC);
}
/// As this process used it: not disturbed by what else runs on the machine.
inline double processorSeconds()
{
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

/// Ends the program with one line that says why it cannot measure.
[[noreturn]] inline void fail(const char* why)
{
    std::fprintf(stderr, "%s\n", why);
    std::_Exit(EXIT_FAILURE);
}

/// Ends a program whose figures are printed without destroying its objects: a logger waits up to a
/// second for its thread.
[[noreturn]] inline void leave()
{
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);
}

/// How often to do it, from a word of the command line; at least once.
inline long repetitions(const char* word)
{
    char* end = nullptr;
    const long count = std::strtol(word, &end, 10);
    if (end == word || *end != '\0' || count < 1)
    {
        fail("the number of repetitions is no number above 0");
    }
    return count;
}

} // namespace bench
