#pragma once

#include <cstdint>

namespace orvo::test
{

/// The wall clock of a test program that runs in virtual time: the program has its own
/// gettimeofday, which is where QDateTime takes the time from. It shows the real time until set()
/// is called for the first time.
///
/// Units:   ms since 1970-01-01 UTC.
/// Threads: any.
class VirtualClock
{
public:
    [[nodiscard]] static std::int64_t now();

    /// Stops the clock at this time; from here on it moves only by set() and step().
    static void set(std::int64_t ms);

    /// Moves the clock, back as well as forth; a clock that was not set yet stops first.
    static void step(std::int64_t ms);

    /// Shows the real time again.
    static void release();
};

} // namespace orvo::test
