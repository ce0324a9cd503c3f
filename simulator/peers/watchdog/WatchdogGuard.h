#pragma once

#include "common/Journal.h"
#include "watchdog/Countdown.h"
#include "watchdog/DeviceNode.h"
#include "watchdog/GuardOptions.h"
#include "watchdog/GuardedProgram.h"
#include "watchdog/WatchdogRequests.h"

#include <memory>

namespace orvo::simulator
{

/// The watchdog hardware of the simulated device, around the program that has to feed it.
///
/// Shape:   journal lines "<monotonic s.6> EVENT": `open`, `gettimeout`, `feed N` (N counts from 1
///          until the guard ends), `write`, `close`, `removed`, `reset`, `exit STATUS` (of the
///          program).
///          Opening the node starts the count, a feed or a write starts it again, and nothing stops
///          it: neither closing (with or without the magic byte, as with a driver built not to give
///          way out) nor the end of the program. SIGUSR1 removes the hardware: it counts on, but
///          hears nothing any more, and every request is answered with ENODEV.
/// Units:   see GuardOptions.
/// Threads: one; run() blocks until the device is reset or nothing is left to guard.
/// Errors:  see run().
class WatchdogGuard
{
public:
    /// The guard's exit status after a reset.
    static constexpr int kResetStatus = 70;
    /// The guard could not do its work; the reason is on standard error.
    static constexpr int kFailureStatus = 71;

    explicit WatchdogGuard(const GuardOptions& options);

    /// Runs the program to its end, and on until the countdown ends when it is running.
    /// @return kResetStatus after a reset, which has killed the program with all its descendants;
    ///         kFailureStatus; else the program's exit status, 128 + number for a signal.
    int run();

private:
    bool waitForEvents();
    void noteDeviceEvents();
    void answerRequest();
    void noteEnd();
    void noteRemoval();

    GuardOptions m_options;
    Journal m_journal;
    DeviceNode m_node;
    Countdown m_countdown;
    GuardedProgram m_program;
    Descriptor m_removal;
    std::unique_ptr<WatchdogRequests> m_requests;
    bool m_filterInUse{true};
    bool m_isRemoved{false};
    bool m_endNoted{false};
    unsigned long m_feeds{0};
};

} // namespace orvo::simulator
