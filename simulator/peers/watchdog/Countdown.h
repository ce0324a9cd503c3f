#pragma once

#include "common/Descriptor.h"

namespace orvo::simulator
{

/// The counter of the watchdog hardware.
///
/// Units:   milliseconds of the monotonic clock.
/// Threads: one at a time.
class Countdown
{
public:
    explicit Countdown(int timeoutMs);

    /// False when the kernel offers no timer; errno says why.
    [[nodiscard]] bool isValid() const { return m_timer.isOpen(); }

    /// Readable when the time is up.
    [[nodiscard]] int descriptor() const { return m_timer.get(); }

    /// Starts to count, or starts again from the full time.
    void restart();

    [[nodiscard]] bool isRunning() const { return m_running; }

    /// Whether the time has run out since the last restart().
    [[nodiscard]] bool hasExpired() const;

private:
    int m_timeoutMs;
    Descriptor m_timer;
    bool m_running{false};
};

} // namespace orvo::simulator
