#pragma once

#include <cstdint>
#include <string>

namespace orvo::ctl
{

/// The two clocks of the device at one moment, to tell when a record was written.
struct DeviceClock
{
    double monotonic{0};    ///< seconds
    std::int64_t wallMs{0}; ///< since 1970, UTC

    /// Now.
    static DeviceClock now();

    [[nodiscard]] double age(double monotonicTime) const { return monotonic - monotonicTime; }
    /// Wall time in ms of a monotonic time; wrong by the step when the wall clock was stepped
    /// since.
    [[nodiscard]] std::int64_t wallMsOf(double monotonicTime) const;

    /// "05:38:46.123", local.
    [[nodiscard]] std::string timeText(double monotonicTime) const;
    /// "2026-11-21T05:38:46.123Z".
    [[nodiscard]] std::string isoText(double monotonicTime) const;
};

} // namespace orvo::ctl
