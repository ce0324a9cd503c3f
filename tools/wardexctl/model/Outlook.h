#pragma once

#include "model/DeviceFacts.h"

#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// The device in one word.
enum class Verdict
{
    Stable,
    Starting,
    Unstable,
    Rebooting,
    Silent ///< the supervisor does not answer
};

/// "stable", "starting", "unstable", "rebooting", "supervisor silent".
std::string verdictText(Verdict verdict);

/// What the bus knows at the moment.
struct BusView
{
    bool answers{false};
    bool areJudgedListed{false}; ///< both judged services are in the supervisor's list
    bool isThere{true};          ///< the bus itself; without it the supervisor may run on
};

/// Whether a judged service is available: by the records where they tell, else by the supervisor's
/// list. That has every service that is on the bus, also one that hangs, and so does not count soon
/// after a script had to start it.
bool isAvailable(const DeviceFacts& facts, const std::string& name, bool isListed, double now);

/// Whether the supervisor has ordered the reboot: it never answers again, and is not to be waited
/// for.
bool isBeyondAnswering(const DeviceFacts& facts);

/// Judges by the records where they tell the state, else by the bus.
/// Units: now in seconds of the monotonic clock.
Verdict verdictOf(const DeviceFacts& facts, const BusView& bus, double now);

/// The package restarts that count.
struct RestartBudget
{
    int used{0};    ///< within the window
    int limit{0};   ///< so many are restarts, the next need is a reboot
    int window{0};  ///< seconds
    double free{0}; ///< seconds until the oldest one no longer counts; 0 with none used
};

RestartBudget restartBudget(const DeviceFacts& facts, double now);
std::string budgetText(const RestartBudget& budget);

/// Strikes of a service against the threshold of its machine's state; it leaves with one more.
struct Strikes
{
    int count{0};
    int threshold{0};
};

/// Seconds between the pings of a service: its usual ones, or what a caller asked for.
double intervalOf(const ServiceFacts& service, const std::string& name);

/// Pings due in the present state so far; nothing without a state, or when no ping comes.
std::optional<int> ticksOf(const ServiceFacts& service, const std::string& name, double now);

/// Nothing while the state is not known. While starting or down every ping that does not end the
/// state is a strike, so the time tells; while up the records tell.
std::optional<Strikes> strikesOf(const DeviceFacts& facts, const ServiceFacts& service,
                                 const std::string& name, double now);

/// What comes if nothing changes.
struct NextEvent
{
    double seconds{0}; ///< from now; less than 0: it does not come by itself
    std::string text;
};

/// What comes next to the device and to its services, the soonest first. Empty when nothing does,
/// or when the records do not tell.
std::vector<NextEvent> nextEvents(const DeviceFacts& facts, const BusView& bus, double now);

} // namespace orvo::ctl
