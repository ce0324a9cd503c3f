#include "model/Outlook.h"

#include "SupervisionLimits.h"
#include "model/Duration.h"
#include "model/Periods.h"
#include "model/ServiceNames.h"

#include <algorithm>
#include <cmath>

namespace orvo::ctl
{

namespace
{

constexpr double kStartSeconds = (kStartingTickLimit + 1) * kTickSeconds;
constexpr int kWindowSeconds = static_cast<int>(kRestartWindowMinutes * kSecondsPerMinute);

/// Restarts that still count at a time.
int restartsAt(const DeviceFacts& facts, double time)
{
    return static_cast<int>(
        std::count_if(facts.packageRestarts.begin(), facts.packageRestarts.end(),
                      [&](double restart) { return restart > time - kWindowSeconds; }));
}

/// A service that hangs is found dead again within this many of its pings.
constexpr int kQuietPings = 2 * (kStartingBadPingThreshold + kDownBadPingThreshold + 2);

bool isRecentlyDead(const ServiceFacts& service, const std::string& name, double now)
{
    return service.lastScript && now - *service.lastScript < kQuietPings * pingSeconds(name);
}

bool isAnyRecentlyDead(const DeviceFacts& facts, double now)
{
    return std::any_of(facts.services.begin(), facts.services.end(),
                       [&](const auto& each)
                       { return isRecentlyDead(each.second, each.first, now); });
}

std::string notIn(const DeviceFacts& facts, const char* what)
{
    return facts.isDeveloper ? std::string(what) + " (only noted: developer mode)" : what;
}

NextEvent nextWhileUnstable(const DeviceFacts& facts, double now)
{
    const int left = static_cast<int>(kUnstableTickLimit) + 1 - facts.unstableTicks;
    const double at = facts.systemSince + left * kTickSeconds;
    const double seconds = std::max(at - now, 0.0);
    if (restartsAt(facts, at) >= static_cast<int>(kRestartLimit))
    {
        return {seconds, notIn(facts, "the device reboots")};
    }
    return {seconds, notIn(facts, "the whole software package is restarted")};
}

std::optional<NextEvent> nextOfDevice(const DeviceFacts& facts, double now)
{
    if (facts.systemState == "SuprStartingSystem")
    {
        return NextEvent{std::max(facts.systemSince + kStartSeconds - now, 0.0),
                         "the device counts as unstable"};
    }
    if (facts.systemState == "SuprUnstableSystem")
    {
        return nextWhileUnstable(facts, now);
    }
    if (facts.reboot)
    {
        return facts.isDeveloper ? NextEvent{-1, "nothing (developer mode): stays so until both "
                                                 "services are up"}
                                 : NextEvent{0, "the device reboots, or its watchdog resets it"};
    }
    return std::nullopt;
}

std::optional<NextEvent> nextOfService(const DeviceFacts& facts, const ServiceFacts& service,
                                       const std::string& name, double now)
{
    const auto strikes = strikesOf(facts, service, name, now);
    if (!strikes || (service.state == "SuprUp" && strikes->count == 0))
    {
        return std::nullopt;
    }
    const double period = intervalOf(service, name);
    const bool isUp = service.state == "SuprUp";
    const double begin =
        isUp ? std::max(service.lastFailure, service.intervalSince) : service.intervalSince;
    const int before = isUp ? strikes->count : service.ticksBefore;
    const double seconds = std::max(begin + (strikes->threshold + 1 - before) * period - now, 0.0);
    const std::string shortName = shortNameOf(name);
    if (service.state != "SuprDown")
    {
        return NextEvent{seconds, shortName + " counts as down"};
    }
    if (facts.systemState == "SuprStartingSystem" && !facts.isDeveloper)
    {
        return NextEvent{std::max(std::min(seconds, period), 0.0),
                         shortName + " is given a fresh start phase"};
    }
    return NextEvent{seconds, facts.isDeveloper
                                  ? shortName + " would be restarted (only noted: developer mode)"
                                  : shortName + " is stopped and started by its script"};
}

} // namespace

std::string verdictText(Verdict verdict)
{
    switch (verdict)
    {
    case Verdict::Stable:
        return "stable";
    case Verdict::Starting:
        return "starting";
    case Verdict::Unstable:
        return "unstable";
    case Verdict::Rebooting:
        return "rebooting";
    case Verdict::Silent:
        break;
    }
    return "supervisor silent";
}

bool isAvailable(const DeviceFacts& facts, const std::string& name, bool isListed, double now)
{
    const auto found = facts.services.find(name);
    if (found == facts.services.end())
    {
        return isListed;
    }
    return found->second.isAvailable.value_or(isListed &&
                                              !isRecentlyDead(found->second, name, now));
}

bool isBeyondAnswering(const DeviceFacts& facts)
{
    return facts.reboot.has_value() && !facts.isDeveloper;
}

Verdict verdictOf(const DeviceFacts& facts, const BusView& bus, double now)
{
    if (isBeyondAnswering(facts))
    {
        return Verdict::Rebooting;
    }
    if (!bus.answers)
    {
        return Verdict::Silent;
    }
    if (facts.systemState == "SuprStableSystem")
    {
        return Verdict::Stable;
    }
    if (facts.systemState == "SuprStartingSystem")
    {
        return Verdict::Starting;
    }
    if (!facts.systemState.empty())
    {
        return Verdict::Unstable;
    }
    if (bus.areJudgedListed)
    {
        return isAnyRecentlyDead(facts, now) ? Verdict::Unstable : Verdict::Stable;
    }
    const double begin = facts.packageRestarts.empty() ? facts.started.value_or(now - kStartSeconds)
                                                       : facts.packageRestarts.back();
    return now - begin < kStartSeconds ? Verdict::Starting : Verdict::Unstable;
}

RestartBudget restartBudget(const DeviceFacts& facts, double now)
{
    RestartBudget budget{restartsAt(facts, now), static_cast<int>(kRestartLimit), kWindowSeconds,
                         0};
    for (const double restart : facts.packageRestarts)
    {
        if (restart > now - kWindowSeconds)
        {
            budget.free = restart + kWindowSeconds - now;
            break;
        }
    }
    return budget;
}

std::string budgetText(const RestartBudget& budget)
{
    const std::string used = std::to_string(budget.used) + " of " + std::to_string(budget.limit) +
                             " package restarts in " + std::to_string(budget.window) + " s; ";
    if (budget.used >= budget.limit)
    {
        return used + "a need within " + durationText(budget.free) + " reboots";
    }
    return used + "need number " + std::to_string(budget.limit + 1) + " in that time reboots";
}

double intervalOf(const ServiceFacts& service, const std::string& name)
{
    return service.interval.value_or(pingSeconds(name));
}

std::optional<int> ticksOf(const ServiceFacts& service, const std::string& name, double now)
{
    const double interval = intervalOf(service, name);
    if (service.state.empty() || interval <= 0)
    {
        return std::nullopt;
    }
    const double spent = std::max(now - service.intervalSince, 0.0);
    return ticksAfter(service.ticksBefore, spent, interval);
}

std::optional<Strikes> strikesOf(const DeviceFacts& facts, const ServiceFacts& service,
                                 const std::string& name, double now)
{
    const auto ticks = ticksOf(service, name, now);
    if (!ticks)
    {
        return std::nullopt;
    }
    if (service.state == "SuprUp")
    {
        // A ping that was answered since leaves no record: the row ended when the next is overdue.
        const bool isOver = now - std::max(service.lastFailure, service.intervalSince) >
                            2 * intervalOf(service, name);
        return Strikes{isOver ? 0 : service.failedPings, kUpBadPingThreshold};
    }
    if (service.state == "SuprStarting")
    {
        return Strikes{std::min(*ticks, kStartingBadPingThreshold), kStartingBadPingThreshold};
    }
    // In developer mode a dead service stays, and is counted anew.
    const int shown = facts.isDeveloper ? *ticks % (kDownBadPingThreshold + 1)
                                        : std::min(*ticks, kDownBadPingThreshold);
    return Strikes{shown, kDownBadPingThreshold};
}

std::vector<NextEvent> nextEvents(const DeviceFacts& facts, const BusView& bus, double now)
{
    std::vector<NextEvent> events;
    if (!bus.isThere && !facts.reboot)
    {
        return {{-1, "not known while the system bus cannot be reached"}};
    }
    if (!bus.answers && !facts.reboot)
    {
        return {{-1, "nobody feeds the watchdog: it will reset the device"}};
    }
    if (const auto event = nextOfDevice(facts, now))
    {
        events.push_back(*event);
    }
    for (const auto& [name, service] : facts.services)
    {
        const auto event = nextOfService(facts, service, name, now);
        if (event && (!facts.reboot || facts.isDeveloper))
        {
            events.push_back(*event);
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const NextEvent& left, const NextEvent& right)
                     { return left.seconds < right.seconds; });
    return events;
}

} // namespace orvo::ctl
