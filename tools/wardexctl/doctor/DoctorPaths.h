#pragma once

namespace orvo::ctl
{

/// What the kernel tells about the watchdog without its being opened: the time-out in seconds.
inline constexpr char kWatchdogTimeoutFile[] = "/sys/class/watchdog/watchdog0/timeout";
/// Seconds until it resets the device; only some drivers tell.
inline constexpr char kWatchdogTimeLeftFile[] = "/sys/class/watchdog/watchdog0/timeleft";

/// Below it a folder for each process.
inline constexpr char kProcessFolder[] = "/proc";

} // namespace orvo::ctl
