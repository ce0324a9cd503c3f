#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

// What the records tell about the device since the supervisor's last start. Times are seconds of
// the monotonic clock.

/// One service with a machine.
struct ServiceFacts
{
    std::string state; ///< class name of the machine's state; empty: no record told
    double since{0};   ///< its entry
    /// Seconds between its pings, when a caller changed that; until the next state.
    std::optional<double> interval;
    double intervalSince{0}; ///< when that was
    int ticksBefore{0};      ///< of this state at that time
    /// "up", "starting", "down", "none" (no answer), or empty when no record told.
    std::string runLevel;
    int failedPings{0};    ///< in a row, only told while up
    double lastFailure{0}; ///< of them
    std::optional<bool> isAvailable;
    double availableSince{0};
    std::optional<double> lastScript; ///< when its script was run because it was dead
    int scripts{0};                   ///< how often
};

/// The device and its supervisor.
struct DeviceFacts
{
    std::optional<double> started; ///< of the supervisor; nothing when the log no longer has it
    bool isDeveloper{false};
    std::string family; ///< empty: no record told
    std::string pid;
    std::string systemState; ///< class name; empty: no record told
    double systemSince{0};
    int unstableTicks{0}; ///< of unstable periods that are over, since the last package restart
    std::vector<double> packageRestarts; ///< in developer mode those that would have been
    std::optional<double> reboot;        ///< decided
    std::optional<double> unfed;         ///< the last time the watchdog could not be fed
    std::optional<std::uint32_t> mask;   ///< as announced last
    bool isTraceSeen{false};             ///< and not masked since
    std::optional<double> traceHidden;   ///< since when TRACE is masked, if that was announced
    std::map<std::string, ServiceFacts> services; ///< by bus name
};

} // namespace orvo::ctl
