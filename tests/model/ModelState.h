#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orvo::model
{

/// The services that a device can have. The first two are judged by a machine each.
enum Service : unsigned
{
    Vistor,
    Pictor,
    Wirl,
    Quorl
};
inline constexpr unsigned kServices = 4;
inline constexpr unsigned kMachines = 2;

/// A service as the rules name it.
struct ServiceFacts
{
    const char* busName;
    const char* process;
    const char* script;
    int intervalMs;
};

inline constexpr std::array<ServiceFacts, kServices> kServiceFacts{{
    {"com.orvo.vistor", "corvane", "/opt/orvo/etc/init.d/40_corvane", 2200},
    {"com.orvo.pictor", "pictor", "/opt/orvo/etc/init.d/30_pictor", 1000},
    {"com.orvo.wirl", "wirl", "/opt/orvo/etc/init.d/10_wirl", 1000},
    {"com.orvo.quorl", "quorl", "/opt/orvo/etc/init.d/20_quorl", 1000},
}};

/// A set of services, one bit each.
using ServiceSet = std::uint32_t;
inline constexpr ServiceSet bitOf(unsigned service)
{
    return ServiceSet{1} << service;
}
inline constexpr ServiceSet kMustBeUp = bitOf(Vistor) | bitOf(Pictor);

enum class ServicePhase : std::uint8_t
{
    Starting,
    Up,
    Down
};

enum class SystemPhase : std::uint8_t
{
    Starting,
    Stable,
    Unstable,
    Reboot
};

/// A repeating timer of the event loop.
struct ModelTimer
{
    int intervalMs;
    std::int64_t due;
    std::uint64_t order; ///< of starting and firing, among timers due at one moment
};

/// What a supervisor knows. A plain value: copied, compared and put away by the exploration.
struct ModelState
{
    struct Machine
    {
        ServicePhase phase{ServicePhase::Starting};
        int badPings{0};
    };

    std::array<Machine, kMachines> machines{};
    SystemPhase system{SystemPhase::Starting};
    unsigned startingTicks{0};
    unsigned unstableTicks{0};
    std::vector<std::int64_t> restarts{}; ///< wall clock of each package restart
    ServiceSet up{0};
    ServiceSet onBus{0};
    bool isRebooting{false};

    std::array<int, kServices> intervals{};
    std::array<ModelTimer, kMachines + 1> timers{}; ///< the last one is the system machine's
    std::uint64_t timerOrder{0};
};
inline constexpr unsigned kSystemTimer = kMachines;

/// What does not change while a supervisor runs.
struct ModelSetting
{
    ServiceSet services{kMustBeUp}; ///< the family's
    bool isDeveloper{false};
    std::uint32_t logMask{0xFF};
    std::string program{"wardex"};
};

} // namespace orvo::model
