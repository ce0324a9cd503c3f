#include "timeline/LaneCells.h"

#include <algorithm>
#include <cmath>

namespace orvo::ctl
{

namespace
{

constexpr std::array<Health, kHealths> kWorstFirst = {
    Health::Rebooting, Health::Down, Health::Starting, Health::Up, Health::Unknown};

void count(LaneCell& cell, const TimelineSpan& span)
{
    const double seconds = std::min(cell.end, span.end) - std::max(cell.begin, span.begin);
    if (seconds > 0)
    {
        cell.seconds[static_cast<std::size_t>(span.health)] += seconds;
        ++cell.spans;
    }
}

} // namespace

double LaneCell::secondsOf(Health health) const
{
    return seconds[static_cast<std::size_t>(health)];
}

Health LaneCell::worst() const
{
    return *std::find_if(kWorstFirst.begin(), kWorstFirst.end(),
                         [this](Health each)
                         { return secondsOf(each) > 0 || each == Health::Unknown; });
}

bool LaneCell::isMixed() const
{
    // With one change in it, it is the edge of something longer.
    constexpr int kMany = 3;
    return spans >= kMany && secondsOf(worst()) < (end - begin) / 2;
}

std::vector<LaneCell> laneCells(const std::vector<TimelineSpan>& spans, double begin, double end,
                                std::size_t count)
{
    std::vector<LaneCell> cells(count);
    const double length = (end - begin) / static_cast<double>(count);
    for (std::size_t index = 0; index < count; ++index)
    {
        cells[index].begin = begin + static_cast<double>(index) * length;
        cells[index].end =
            index + 1 == count ? end : begin + static_cast<double>(index + 1) * length;
    }
    for (const TimelineSpan& span : spans)
    {
        const std::size_t last = cellOf(span.end, begin, end, count);
        for (std::size_t index = cellOf(span.begin, begin, end, count); index <= last; ++index)
        {
            ctl::count(cells[index], span);
        }
    }
    return cells;
}

std::size_t cellOf(double time, double begin, double end, std::size_t count)
{
    const double place = std::floor((time - begin) / (end - begin) * static_cast<double>(count));
    return static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(count - 1)));
}

std::vector<LaneCell> drawnCells(const TimelineLane& lane, double leastSeconds)
{
    std::vector<LaneCell> drawn;
    const auto isShort = [&](const TimelineSpan& each)
    {
        return each.seconds() < leastSeconds;
    };
    for (auto first = lane.spans.begin(); first != lane.spans.end();)
    {
        const auto past =
            isShort(*first) ? std::find_if_not(first, lane.spans.end(), isShort) : std::next(first);
        const std::vector<TimelineSpan> together(first, past);
        const double seconds = together.back().end - together.front().begin;
        const auto parts =
            together.size() == 1 ? 1 : std::max(std::floor(seconds / leastSeconds), 1.0);
        const auto cells = laneCells(together, together.front().begin, together.back().end,
                                     static_cast<std::size_t>(parts));
        drawn.insert(drawn.end(), cells.begin(), cells.end());
        first = past;
    }
    return drawn;
}

} // namespace orvo::ctl
