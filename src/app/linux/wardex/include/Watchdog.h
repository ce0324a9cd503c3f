#pragma once

#include "FileDescriptor.h"

namespace orvo
{

/// Feeds the device's hardware watchdog, which resets the device when nobody does.
///
/// Owns:    the descriptor of kWatchdogNode until the process ends; closed without the magic byte,
///          so the hardware keeps counting after the supervisor has gone, and a new supervisor must
///          open and feed it in time.
/// Threads: event loop only.
/// Errors:  a node that cannot be opened is remembered: every feed() answers false, supervision
///          goes on.
/// On the device: the length of the countdown belongs to the boot configuration, so it is read and
///          never set; it must be longer than the one second between two feeds.
class Watchdog
{
public:
    /// The one watchdog of the process, opened by the first call. Never called in developer mode:
    /// a node that was opened once resets the device.
    static Watchdog& instance();

    virtual ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// Starts the countdown anew. False when the node is not open; otherwise true, whatever the
    /// driver answers.
    virtual bool feed();

private:
    Watchdog();

    FileDescriptor m_node;
};

} // namespace orvo
