#pragma once

namespace orvo
{

// The places and commands of the device that supervision relies on. All of them belong to the
// device's image; nothing here can be configured.

/// Lists the processes; called without arguments. The image's own program, whatever PATH says.
inline constexpr const char kProcessListProgram[] = "/bin/ps";

/// The hardware watchdog. Opened by the supervisor alone; the kernel lets nobody else open it then.
inline constexpr const char kWatchdogNode[] = "/dev/watchdog";

/// Marker files of a developer's device; only their being readable counts. The first is lost with a
/// new image, the second lies on the partition that firmware updates keep.
inline constexpr const char kDeveloperMarker[] = "/etc/mirrorfin_develop";
inline constexpr const char kPersistentDeveloperMarker[] = "/etc/sysdata/mirrorfin_develop";

/// Shell command: the kernel reboots 60 s after a panic instead of halting.
inline constexpr const char kPanicCommand[] = "echo 60 >/proc/sys/kernel/panic";

/// Shell command: reboots the device in an orderly way.
inline constexpr const char kRebootCommand[] = "reboot";

/// Shell command: makes room in the memory-backed /tmp before everything starts anew. Needs the
/// shell for its wildcard.
inline constexpr const char kRemoveCoresCommand[] = "rm -f /tmp/core_*";

/// Shell command: stops and starts the whole software package of the device.
inline constexpr const char kRestartPackageCommand[] = "/etc/init.d/mf-optware restart";

/// Words that follow the path of an init script.
inline constexpr const char kInitScriptRestart[] = " restart";
inline constexpr const char kInitScriptStop[] = " stop";

} // namespace orvo
