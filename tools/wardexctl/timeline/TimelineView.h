#pragma once

#include "log/DeviceClock.h"
#include "model/Timeline.h"

#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// All that the verb timeline shows, gathered at one moment.
struct TimelineView
{
    Timeline timeline;
    DeviceClock clock;
    /// By how much the wall clock was set since the log began, in seconds. When is not known, so
    /// that no wall time but the present one is.
    std::optional<double> wallStep;

    /// "05:38:46.123", or its age where the wall time is not known.
    [[nodiscard]] std::string timeText(double time) const;
    /// "05:38:46 to 05:41:10 (2 min 24 s)".
    [[nodiscard]] std::string rangeText() const;
};

/// "device stable for 12 s; 1 package restart, 2 service restarts".
std::string headlineOf(const Timeline& timeline);

/// ", DEVELOPER MODE: nothing is restarted or rebooted", or nothing.
std::string modeText(const Timeline& timeline);

/// "up for 12 s", "unknown": how a lane is at its end.
std::string presentText(const TimelineLane& lane);

/// What a reader has to know beyond the bars, each in one sentence.
std::vector<std::string> remarksOf(const TimelineView& view);

} // namespace orvo::ctl
