#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace orvo::ctl
{

/// A process of `loglevel --for`, which waits and then sets a source's former levels again.
///
/// On the device: its command line is `wardexctl loglevel SOURCE LEVELS --after SPAN --falls-back`;
/// the last word tells it from a person's `--after`. Threads: any, for all of these.
struct FallBack
{
    pid_t process;
    std::string levels; ///< what it will set, as the command line takes it
};

/// Leaves such a process behind.
///
/// Units: `span` as durationOf() reads it.
/// Owns:  nothing: the process belongs to the system, and ends by itself.
/// Errors: 0 when it could not be started.
pid_t leaveFallBack(const std::string& source, const std::string& levels, const std::string& span);

/// Those that wait for a source, by the process list; none where it cannot be read.
std::vector<FallBack> waitingFallBacks(const std::string& source);

/// Ends processes before they have set anything.
void callOff(const std::vector<FallBack>& fallBacks);

} // namespace orvo::ctl
