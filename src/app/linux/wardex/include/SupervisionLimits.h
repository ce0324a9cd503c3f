#pragma once

namespace orvo
{

// Limits and periods of supervision, with their units. Fixed: the device has no configuration file
// for them.

/// Bytes of a once-only syslog text with its terminator; a longer text is cut, not dropped.
inline constexpr int kSyslogTextBytes = 512;

/// Seconds per nap of the endless wait after the reboot command.
inline constexpr unsigned kRebootNapSeconds = 1;

/// Static SCHED_FIFO priority of the event-loop thread: the lowest one is enough to win over every
/// ordinary process, and leaves the rest to the camera's own real-time threads.
inline constexpr int kRealTimePriority = 1;

} // namespace orvo
