#include "model/WhyChain.h"

#include "SupervisionLimits.h"
#include "model/Duration.h"
#include "model/Periods.h"
#include "model/ServiceNames.h"
#include "model/SupervisorEvent.h"

#include <algorithm>
#include <cstddef>

namespace orvo::ctl
{

namespace
{

using Kind = SupervisorEvent::Kind;

struct TimedEvent
{
    double time;
    std::string pid;
    std::string level;
    SupervisorEvent event;
};

/// The bus's own news only repeat what the machines make of them.
bool isStep(Kind kind)
{
    return kind != Kind::None && kind != Kind::MaskChanged && kind != Kind::Grace &&
           kind != Kind::CameToBus && kind != Kind::LeftBus;
}

std::vector<TimedEvent> eventsOf(const std::vector<ReadRecord>& records)
{
    std::vector<TimedEvent> events;
    for (const ReadRecord& record : records)
    {
        const SupervisorEvent event = supervisorEvent(record);
        if (isStep(event.kind))
        {
            events.push_back({record.seconds(), record.pid, record.level, event});
        }
    }
    return events;
}

bool isReboot(Kind kind)
{
    return kind == Kind::TooManyRestarts || kind == Kind::SystemRestart ||
           kind == Kind::SystemRestartDisabled;
}

bool isPackageRestart(Kind kind)
{
    return kind == Kind::PackageRestart || kind == Kind::PackageDisabled;
}

bool isServiceRestart(const TimedEvent& timed, const std::string& busName)
{
    return (timed.event.kind == Kind::ConsideredDead || timed.event.kind == Kind::DeadDisabled) &&
           (busName.empty() || timed.event.name == busName);
}

bool isEnd(const TimedEvent& timed, const std::string& busName)
{
    const Kind kind = timed.event.kind;
    return isServiceRestart(timed, busName) ||
           (busName.empty() && (isReboot(kind) || isPackageRestart(kind)));
}

std::string titleOf(const SupervisorEvent& event)
{
    const bool isDeveloper = event.kind == Kind::DeadDisabled ||
                             event.kind == Kind::PackageDisabled ||
                             event.kind == Kind::SystemRestartDisabled;
    const std::string would = isDeveloper ? " (only noted: developer mode)" : "";
    if (isReboot(event.kind))
    {
        return "the device was rebooted" + would;
    }
    if (isPackageRestart(event.kind))
    {
        return "the whole software package was restarted" + would;
    }
    return shortNameOf(event.name) + " was restarted" + would;
}

/// Where the chain begins: before a service's death its last good state, before a package restart
/// the device's, before a reboot the first of the restarts that count.
std::size_t beginOf(const std::vector<TimedEvent>& events, std::size_t end, bool& isWhole)
{
    const TimedEvent& last = events[end];
    constexpr double kWindow = kRestartWindowMinutes * kSecondsPerMinute;
    std::size_t begin = end;
    std::size_t earliest = end;
    while (begin > 0)
    {
        const TimedEvent& before = events[begin - 1];
        if (before.pid != last.pid)
        {
            return isReboot(last.event.kind) ? earliest : begin;
        }
        --begin;
        const Kind kind = before.event.kind;
        if (kind == Kind::Started || kind == Kind::StartedDeveloper)
        {
            return begin;
        }
        if (isReboot(last.event.kind))
        {
            if (before.time < last.time - kWindow)
            {
                return earliest;
            }
            earliest = begin;
        }
        else if (isPackageRestart(last.event.kind))
        {
            // The unstable ticks count since the package restart before.
            if (isPackageRestart(kind))
            {
                return begin + 1;
            }
        }
        else if ((kind == Kind::ServiceEntry && before.event.name == last.event.name &&
                  before.event.state == "SuprUp") ||
                 (isServiceRestart(before, last.event.name)))
        {
            return begin;
        }
    }
    isWhole = false;
    return begin;
}

bool concerns(const SupervisorEvent& event, const SupervisorEvent& end)
{
    switch (event.kind)
    {
    case Kind::ServiceEntry:
    case Kind::PingFailed:
    case Kind::NotRegistered:
        return isServiceRestart({0, "", "", end}, event.name) || isPackageRestart(end.kind);
    case Kind::ServiceDown:
    case Kind::Family:
    case Kind::NoFamily:
    case Kind::MaskChanged:
    case Kind::None:
        return false;
    case Kind::ServiceIsUp:
    case Kind::ServiceIsDown:
        return end.name.empty() || end.name == event.name ||
               !isServiceRestart({0, "", "", end}, "");
    case Kind::ConsideredDead:
    case Kind::DeadDisabled:
        return end.name.empty() || end.name == event.name;
    default:
        return true;
    }
}

/// Of the minutes before a reboot only what weighs is told, or it would be hundreds of steps.
bool weighs(Kind kind)
{
    switch (kind)
    {
    case Kind::Started:
    case Kind::StartedDeveloper:
    case Kind::SystemEntry:
    case Kind::ServiceIsDown:
    case Kind::ConsideredDead:
    case Kind::DeadDisabled:
    case Kind::Unfed:
        return true;
    default:
        return isPackageRestart(kind) || isReboot(kind);
    }
}

bool comesOften(Kind kind)
{
    return kind == Kind::ServiceIsDown || kind == Kind::ConsideredDead ||
           kind == Kind::DeadDisabled || kind == Kind::Unfed;
}

std::string seconds(unsigned ticks)
{
    return std::to_string(ticks) + " ticks of " + durationText(kTickSeconds);
}

WhyStep serviceEntryStep(const SupervisorEvent& event)
{
    const std::string name = shortNameOf(event.name);
    if (event.state == "SuprUp")
    {
        return {0, name + " is up", "it answered its ping with \"up\""};
    }
    if (event.state == "SuprStarting")
    {
        return {0, name + " is given time to start",
                "it may miss " + std::to_string(kStartingBadPingThreshold) + " pings"};
    }
    return {0, name + " counts as down",
            "after " + std::to_string(kDownBadPingThreshold + 1) +
                " more bad pings it is considered dead"};
}

WhyStep systemEntryStep(const SupervisorEvent& event)
{
    if (event.state == "SuprStableSystem")
    {
        return {0, "the device is stable", "both judged services are up"};
    }
    if (event.state == "SuprStartingSystem")
    {
        return {0, "the device is starting",
                "it must be stable within " + seconds(kStartingTickLimit)};
    }
    if (event.state == "SuprUnstableSystem")
    {
        return {0, "the device is unstable",
                "after more than " + seconds(kUnstableTickLimit) +
                    ", all unstable periods together, the package is restarted"};
    }
    return {0, "the device is to reboot", ""};
}

WhyStep serviceStep(const SupervisorEvent& event)
{
    const std::string name = shortNameOf(event.name);
    switch (event.kind)
    {
    case Kind::ServiceIsUp:
        return {0, name + " is reported up", ""};
    case Kind::ServiceIsDown:
        return {0, name + " is reported down",
                "a judged service that is down makes the device "
                "unstable"};
    case Kind::PingFailed:
        return {0, name + " did not answer its ping",
                "the " + std::to_string(kUpBadPingThreshold + 1) +
                    "th miss in a row takes it down"};
    case Kind::NotRegistered:
        return {0, name + " has left the bus", "a miss while not registered takes it down at once"};
    case Kind::ConsideredDead:
        return {0, name + " is considered dead: its script stops and starts it",
                std::to_string(kDownBadPingThreshold + 1) + " bad pings while down"};
    default:
        return {0, name + " is considered dead, and left so",
                "developer mode restarts nothing; said once only"};
    }
}

WhyStep deviceStep(const SupervisorEvent& event)
{
    switch (event.kind)
    {
    case Kind::Started:
        return {0, "the supervisor started", ""};
    case Kind::StartedDeveloper:
        return {0, "the supervisor started in developer mode", "nothing is restarted or rebooted"};
    case Kind::LevelDown:
        return {0, "a service reported the run level \"down\"", "it is taken down at once"};
    case Kind::LevelStarting:
        return {0, "a service reported the run level \"starting\"", "it is given time to start"};
    case Kind::ThresholdExceeded:
        return {0, "too many pings were missed", "the service is taken down"};
    case Kind::PackageRestart:
        return {0, "the whole software package is restarted",
                "more than " + seconds(kUnstableTickLimit) + " unstable"};
    case Kind::PackageDisabled:
        return {0, "the package restart is only noted", "developer mode; said once only"};
    case Kind::TooManyRestarts:
        return {0, "too many package restarts",
                std::to_string(kRestartLimit) + " within " +
                    std::to_string(kRestartWindowMinutes * kSecondsPerMinute) + " s"};
    case Kind::SystemRestart:
        return {0, "the device is rebooted", "feeding the watchdog ends here, too"};
    case Kind::SystemRestartDisabled:
        return {0, "the reboot is only noted", "developer mode; said once only"};
    default:
        return {0, "the watchdog could not be fed", ""};
    }
}

WhyStep stepOf(const TimedEvent& timed)
{
    WhyStep step;
    switch (timed.event.kind)
    {
    case Kind::ServiceEntry:
        step = serviceEntryStep(timed.event);
        break;
    case Kind::SystemEntry:
        step = systemEntryStep(timed.event);
        break;
    case Kind::ServiceIsUp:
    case Kind::ServiceIsDown:
    case Kind::PingFailed:
    case Kind::NotRegistered:
    case Kind::ConsideredDead:
    case Kind::DeadDisabled:
        step = serviceStep(timed.event);
        break;
    default:
        step = deviceStep(timed.event);
        break;
    }
    step.time = timed.time;
    return step;
}

/// Counts a step to the same one since the device's last step; false when there is none.
bool isRepeated(std::vector<WhyStep>& steps, std::size_t stretch, const WhyStep& step)
{
    const auto same =
        std::find_if(steps.begin() + static_cast<std::ptrdiff_t>(stretch), steps.end(),
                     [&](const WhyStep& each) { return each.what == step.what; });
    if (same == steps.end())
    {
        return false;
    }
    ++same->times;
    return true;
}

/// Puts a step to the chain of a reboot.
void addShortened(WhyChain& chain, const TimedEvent& timed, std::size_t& stretch)
{
    if (!weighs(timed.event.kind))
    {
        return;
    }
    const WhyStep step = stepOf(timed);
    if (!comesOften(timed.event.kind))
    {
        chain.steps.push_back(step);
        stretch = chain.steps.size();
    }
    else if (!isRepeated(chain.steps, stretch, step))
    {
        chain.steps.push_back(step);
    }
}

} // namespace

WhyChain whyChain(const std::vector<ReadRecord>& records, const std::string& busName)
{
    const std::vector<TimedEvent> events = eventsOf(records);
    WhyChain chain;
    const auto last = std::find_if(events.rbegin(), events.rend(),
                                   [&](const TimedEvent& each) { return isEnd(each, busName); });
    if (last == events.rend())
    {
        return chain;
    }
    const std::size_t end = events.size() - 1 - static_cast<std::size_t>(last - events.rbegin());
    chain.title = titleOf(events[end].event);
    chain.pid = events[end].pid;
    std::size_t stretch = 0;
    for (std::size_t index = beginOf(events, end, chain.isWhole); index <= end; ++index)
    {
        chain.isTraceSeen = chain.isTraceSeen || events[index].level == "TRACE";
        if (isReboot(events[end].event.kind))
        {
            addShortened(chain, events[index], stretch);
        }
        else if (concerns(events[index].event, events[end].event))
        {
            chain.steps.push_back(stepOf(events[index]));
        }
    }
    return chain;
}

} // namespace orvo::ctl
