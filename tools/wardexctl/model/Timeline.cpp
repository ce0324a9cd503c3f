#include "model/Timeline.h"

#include "model/Duration.h"
#include "model/ServiceNames.h"
#include "model/SupervisorEvent.h"
#include "model/TimelineBuilder.h"

#include <cmath>

namespace orvo::ctl
{

namespace
{

using ActionKind = TimelineAction::Kind;

/// The clock of another life of the device shows another time.
constexpr double kSlackSeconds = 1;

std::string noted(const std::string& done, const std::string& what, bool isNoted)
{
    return isNoted ? what + " only noted: developer mode" : done;
}

/// As durationText(), to the millisecond where that would tell nothing.
std::string lengthText(double seconds)
{
    constexpr double kTenth = 0.1;
    constexpr double kMilli = 1000;
    return seconds < kTenth ? std::to_string(std::lround(seconds * kMilli)) + " ms"
                            : durationText(seconds);
}

std::string deedText(const TimelineAction& action)
{
    switch (action.kind)
    {
    case ActionKind::SupervisorStart:
        return action.isNoted ? "the supervisor started in developer mode"
                              : "the supervisor started";
    case ActionKind::PackageRestart:
        return noted("the whole software package was restarted", "package restart", action.isNoted);
    case ActionKind::Reboot:
        return "too many package restarts: " +
               noted("the device is rebooted", "reboot", action.isNoted);
    case ActionKind::Unfed:
        return "the watchdog could not be fed";
    case ActionKind::ServiceRestart:
        return shortNameOf(action.name) +
               noted(" was restarted by its script", ": restart", action.isNoted);
    case ActionKind::LeftBus:
        return shortNameOf(action.name) + " left the bus";
    case ActionKind::CameToBus:
        return shortNameOf(action.name) + " came to the bus";
    case ActionKind::Rejoined:
        break;
    }
    return shortNameOf(action.name) + " left the bus and came back";
}

} // namespace

Timeline timelineOf(const std::vector<ReadRecord>& records, const TimelineWindow& window)
{
    std::vector<const ReadRecord*> told;
    std::size_t earlier = 0;
    for (const ReadRecord& record : records)
    {
        if (!record.isRecord || record.source != kSupervisorSource || record.time < 0)
        {
            continue;
        }
        if (!told.empty() && record.seconds() < told.back()->seconds() - kSlackSeconds)
        {
            earlier += told.size();
            told.clear();
        }
        if (record.seconds() > window.now + kSlackSeconds)
        {
            ++earlier;
            continue;
        }
        told.push_back(&record);
    }
    TimelineBuilder builder(window);
    for (const ReadRecord* record : told)
    {
        builder.add(*record);
    }
    Timeline timeline = builder.finish();
    timeline.earlier = earlier;
    return timeline;
}

std::string healthText(Health health, bool isDevice)
{
    switch (health)
    {
    case Health::Up:
        return isDevice ? "stable" : "up";
    case Health::Starting:
        return "starting";
    case Health::Down:
        return isDevice ? "unstable" : "down";
    case Health::Rebooting:
        return "rebooting";
    case Health::Unknown:
        break;
    }
    return "unknown";
}

std::string actionText(const TimelineAction& action)
{
    return deedText(action) + (action.seconds ? ", " + lengthText(*action.seconds) : "");
}

std::string actionLabel(const TimelineAction& action)
{
    switch (action.kind)
    {
    case ActionKind::SupervisorStart:
        return "supervisor started";
    case ActionKind::PackageRestart:
        return action.isNoted ? "would restart package" : "package restart";
    case ActionKind::Reboot:
        return action.isNoted ? "would reboot" : "reboot";
    case ActionKind::Unfed:
        return "watchdog not fed";
    case ActionKind::ServiceRestart:
        return action.isNoted ? "would restart" : "restart";
    case ActionKind::LeftBus:
        return "off the bus";
    case ActionKind::CameToBus:
        return "on the bus";
    case ActionKind::Rejoined:
        break;
    }
    return "off and on the bus";
}

} // namespace orvo::ctl
