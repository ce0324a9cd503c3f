#pragma once

#include "common/Descriptor.h"

#include <vector>

#include <linux/filter.h>

namespace orvo::simulator
{

/// The seccomp program that stops a process at `ioctl` with the requests WDIOC_GETTIMEOUT and
/// WDIOC_KEEPALIVE until a listener has answered; every other system call passes untouched. Knows
/// x86 and ARM, each in 32 and 64 bits, so that it also holds for a 32-bit program on a 64-bit
/// host.
std::vector<sock_filter> watchdogIoctlFilter();

/// Puts the calling process and all its descendants under the filter, for ever.
///
/// Threads: the only thread of the process; makes nothing but system calls.
/// Errors:  a closed descriptor, with errno: the kernel lacks user notification (before Linux 5.5),
///          or the process is under another listener already (EBUSY).
/// @return  the listener, on which the notifications arrive.
Descriptor enterWatchdogIoctlFilter(const std::vector<sock_filter>& filter);

} // namespace orvo::simulator
