#pragma once

namespace orvo::ctl
{

/// What the kernel tells about the watchdog without its being opened: the time-out in seconds.
inline constexpr char kWatchdogTimeoutFile[] = "/sys/class/watchdog/watchdog0/timeout";

/// Below it a folder for each process.
inline constexpr char kProcessFolder[] = "/proc";

} // namespace orvo::ctl
