#pragma once

#include "model/Timeline.h"

#include <array>
#include <cstddef>
#include <vector>

namespace orvo::ctl
{

/// A part of a lane, and for how long it was what.
struct LaneCell
{
    double begin{0};
    double end{0};
    std::array<double, kHealths> seconds{}; ///< by Health
    int spans{0};                           ///< so many of the lane's have a part in it

    [[nodiscard]] double secondsOf(Health health) const;
    [[nodiscard]] Health worst() const;
    /// Too much happened for one word, and most of the time was better than the worst.
    [[nodiscard]] bool isMixed() const;
};

/// Divides a time into cells of equal length, oldest first. What is shorter than a cell is in its
/// worst(): it must not be lost.
std::vector<LaneCell> laneCells(const std::vector<TimelineSpan>& spans, double begin, double end,
                                std::size_t count);

/// The cell of a time; a time outside counts to the nearest.
std::size_t cellOf(double time, double begin, double end, std::size_t count);

/// For a drawing: a cell for each span that can be seen, cells of the least length where many
/// short ones follow each other.
std::vector<LaneCell> drawnCells(const TimelineLane& lane, double leastSeconds);

} // namespace orvo::ctl
