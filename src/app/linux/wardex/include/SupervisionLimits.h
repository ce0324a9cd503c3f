#pragma once

#include <cstddef>
#include <cstdint>

namespace orvo
{

// When the supervisor loses patience, and the other limits and periods of supervision. Fixed: the
// device has no configuration file for them. A service's ping interval is not here, it belongs to
// the service object. With a ping every second the thresholds below mean 7 s of grace for a start,
// 4 s of silence until a service is down, and 2 s more until its init script is run.

/// Bad pings in a row that are borne while a service starts: it loads its calibration first.
inline constexpr int kStartingBadPingThreshold = 6;

/// Bad pings in a row that are borne of a service that is up: one lost answer under load must not
/// take a working camera down.
inline constexpr int kUpBadPingThreshold = 3;

/// Bad pings in a row that are borne of a service that is down: it was judged already, and gets one
/// more chance before it is restarted.
inline constexpr int kDownBadPingThreshold = 1;

/// ms. Period of the system machine and of feeding the hardware watchdog: well below the time-out
/// that the boot configuration gives the watchdog.
inline constexpr int kSystemTickMs = 1000;

/// ms. How long the bus may take to give the supervisor its name, while the whole device starts.
/// The watchdog is not armed yet.
inline constexpr int kBusPatienceMs = 5000;

/// Bus calls for a script or the process list that wait for their turn; what comes above is
/// refused. More than all clients of a device ask at once, and little memory.
inline constexpr std::size_t kWaitingCallLimit = 64;

/// Ticks that the device may take to become stable after power-on or a package restart; it is
/// unstable on the next one.
inline constexpr std::uint32_t kStartingTickLimit = 5;

/// Ticks that are borne unstable, over all unstable periods since the last package restart; the
/// package is restarted on the next one. Leaves time for restarting a single service.
inline constexpr std::uint32_t kUnstableTickLimit = 10;

/// Package restarts within the window after which one more would be pointless: the device reboots.
inline constexpr std::uint32_t kRestartLimit = 3;

/// Minutes for which a package restart counts.
inline constexpr std::uint32_t kRestartWindowMinutes = 5;
inline constexpr std::uint32_t kSecondsPerMinute = 60;

/// Bytes of a once-only syslog text with its terminator; a longer text is cut, not dropped.
inline constexpr int kSyslogTextBytes = 512;

/// Seconds per nap of the endless wait after the reboot command.
inline constexpr unsigned kRebootNapSeconds = 1;

/// Static SCHED_FIFO priority of the event-loop thread: the lowest one is enough to win over every
/// ordinary process, and leaves the rest to the camera's own real-time threads.
inline constexpr int kRealTimePriority = 1;

} // namespace orvo
