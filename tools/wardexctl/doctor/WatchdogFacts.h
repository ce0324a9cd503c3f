#pragma once

#include <optional>

namespace orvo::ctl
{

/// What the kernel tells about the watchdog without its being opened, which would arm it.
///
/// Units: whole seconds, as the kernel has them; nothing when its driver does not tell.
struct WatchdogFacts
{
    std::optional<double> timeout;
    std::optional<double> timeLeft; ///< until it resets the device

    static WatchdogFacts read();
};

} // namespace orvo::ctl
