#include "timeline/TimelineView.h"

#include "model/Duration.h"

#include <algorithm>
#include <cmath>

namespace orvo::ctl
{

namespace
{

using ActionKind = TimelineAction::Kind;

std::string counted(const Timeline& timeline, ActionKind kind, const char* one, const char* many)
{
    const auto count = std::count_if(timeline.actions.begin(), timeline.actions.end(),
                                     [&](const TimelineAction& each) { return each.kind == kind; });
    return count == 0 ? "" : ", " + std::to_string(count) + " " + (count == 1 ? one : many);
}

bool isHidden(const Timeline& timeline)
{
    return std::any_of(timeline.lanes.begin(), timeline.lanes.end(),
                       [](const TimelineLane& each)
                       { return each.spans.back().health == Health::Unknown; });
}

} // namespace

std::string TimelineView::timeText(double time) const
{
    return wallStep ? durationText(clock.age(time)) + " ago" : clock.timeText(time);
}

std::string TimelineView::rangeText() const
{
    constexpr std::size_t kToSecond = 8;
    const std::string span = durationText(timeline.end - timeline.begin);
    if (wallStep)
    {
        return "the last " + span;
    }
    return clock.timeText(timeline.begin).substr(0, kToSecond) + " to " +
           clock.timeText(timeline.end).substr(0, kToSecond) + " (" + span + ")";
}

std::string headlineOf(const Timeline& timeline)
{
    const std::string counts =
        counted(timeline, ActionKind::Reboot, "reboot", "reboots") +
        counted(timeline, ActionKind::PackageRestart, "package restart", "package restarts") +
        counted(timeline, ActionKind::ServiceRestart, "service restart", "service restarts");
    const std::string before = timeline.isDeveloper ? "; noted " : "; ";
    return "device " + presentText(timeline.lanes.front()) +
           (counts.empty() ? "" : before + counts.substr(2));
}

std::string modeText(const Timeline& timeline)
{
    return timeline.isDeveloper ? ", DEVELOPER MODE: nothing is restarted or rebooted" : "";
}

std::string presentText(const TimelineLane& lane)
{
    const TimelineSpan& last = lane.spans.back();
    const std::string word = healthText(last.health, lane.name.empty());
    return last.health == Health::Unknown ? word : word + " for " + durationText(last.seconds());
}

std::vector<std::string> remarksOf(const TimelineView& view)
{
    const Timeline& timeline = view.timeline;
    std::vector<std::string> remarks;
    if (timeline.isMasked && isHidden(timeline))
    {
        remarks.emplace_back("States are logged at TRACE, which is masked; to see them from now "
                             "on:");
        remarks.emplace_back("  wardexctl loglevel wardex +TRACE");
    }
    if (timeline.isSilent)
    {
        remarks.emplace_back("The supervisor does not answer: unknown since its last record.");
    }
    if (view.wallStep)
    {
        remarks.push_back("The wall clock was set " +
                          std::string(*view.wallStep > 0 ? "forward" : "back") + " by " +
                          durationText(std::abs(*view.wallStep)) +
                          " since the log began: wall times are not known.");
    }
    if (timeline.earlier > 0)
    {
        remarks.push_back(std::to_string(timeline.earlier) +
                          " records of an earlier life of the device are left out.");
    }
    return remarks;
}

} // namespace orvo::ctl
