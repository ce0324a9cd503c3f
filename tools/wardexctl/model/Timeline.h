#pragma once

#include "log-reading/ReadRecord.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

// What became of the device over time, as its records tell it. Times are seconds of the monotonic
// clock.

/// How well something was, the worse the later.
enum class Health
{
    Unknown, ///< no record told
    Up,      ///< of the device: stable
    Starting,
    Down,     ///< of the device: unstable
    Rebooting ///< of the device only
};

inline constexpr std::size_t kHealths = 5;

/// A time in which nothing changed.
struct TimelineSpan
{
    double begin{0};
    double end{0};
    Health health{Health::Unknown};
    std::string why; ///< of Unknown: why no record told

    [[nodiscard]] double seconds() const { return end - begin; }
};

/// The device or one of its services: spans without gap from the timeline's begin to its end.
struct TimelineLane
{
    std::string name; ///< of a service, on the bus; empty: the device
    std::vector<TimelineSpan> spans;
};

/// Something that was done, or came from outside.
struct TimelineAction
{
    enum class Kind
    {
        SupervisorStart,
        PackageRestart,
        Reboot,
        Unfed, ///< the watchdog; said once for a row of ticks
        ServiceRestart,
        LeftBus,
        CameToBus,
        Rejoined ///< left the bus and came back at once, as when another program restarts it
    };

    Kind kind{Kind::SupervisorStart};
    double time{0};
    std::string name;              ///< of the service; empty: the device
    std::optional<double> seconds; ///< how long its script ran, or it was off the bus
    bool isNoted{false};           ///< developer mode: only written down
};

struct Timeline
{
    double begin{0};
    double end{0}; ///< the present
    bool isDeveloper{false};
    bool isMasked{false};                ///< TRACE, at the end, so that states are unknown
    bool isSilent{false};                ///< the supervisor, at the end
    bool isTraceSeen{false};             ///< the states are told at the end
    std::size_t earlier{0};              ///< records of an earlier life of the device, left out
    std::vector<TimelineLane> lanes;     ///< the device first
    std::vector<TimelineAction> actions; ///< oldest first
};

/// What is known besides the records.
struct TimelineWindow
{
    std::optional<double> since; ///< begin; without it the first record's time
    double now{0};
    bool isAnswering{true}; ///< the supervisor, at present
    bool isMarked{false};   ///< developer mode by its marker, for a log that no longer tells
};

/// Records oldest first. Nothing is guessed: what no record tells is Unknown.
Timeline timelineOf(const std::vector<ReadRecord>& records, const TimelineWindow& window);

/// "stable", "unstable", ... of the device, "up", "down", ... of a service, "unknown".
std::string healthText(Health health, bool isDevice);

/// "restarted by its script, 0.4 s", "would have been rebooted (developer mode)".
std::string actionText(const TimelineAction& action);

/// The same in two or three words.
std::string actionLabel(const TimelineAction& action);

} // namespace orvo::ctl
