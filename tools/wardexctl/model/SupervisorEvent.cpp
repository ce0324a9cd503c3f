#include "model/SupervisorEvent.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace orvo::ctl
{

namespace
{

using Kind = SupervisorEvent::Kind;

/// A text of the supervisor with at most one name in it.
struct KnownText
{
    Kind kind;
    std::string_view before;
    std::string_view after;
};

constexpr std::array<KnownText, 21> kTexts = {{
    {Kind::Started, "wardex: supervision activity starting, Bello the watchdog, is unfused ...",
     ""},
    {Kind::StartedDeveloper, "wardex starting in developer mode", ""},
    {Kind::Family, "Registerinng services for the ", " family of devices"},
    {Kind::NoFamily, "Unable to detect the device family", ""},
    {Kind::PingFailed, "Ping ", " failed"},
    {Kind::NotRegistered, "Service ", " not registered anymore?! Going down."},
    {Kind::LevelDown, "System run level is down. Going down.", ""},
    {Kind::LevelStarting, "System run level STARTING. Going starting", ""},
    {Kind::ThresholdExceeded, "Ping threshold exceeded. Going down", ""},
    {Kind::DeadDisabled, "Service ", " considered dead, restarting .... (disabled)"},
    {Kind::ConsideredDead, "Service ", " considered dead, restarting"},
    {Kind::PackageRestart,
     "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware", ""},
    {Kind::PackageDisabled, "SUPERVISOR would restart mf-optware, but saved via developer mode",
     ""},
    {Kind::TooManyRestarts, "Too many restarts(", " rebooting whole system ..."},
    {Kind::SystemRestart, "wardex: SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ...", ""},
    {Kind::SystemRestartDisabled,
     "wardex: SUPERVISOR WOULD RESTART SYSTEM via /dev/watchdog ... but saved via developer mode",
     ""},
    {Kind::Grace, "setServicePingTimeoutOneShot: restartTimer(", ")"},
    {Kind::Unfed, "Bello is dead!!!", ""},
    {Kind::CameToBus, "DBus service ", " available"},
    {Kind::LeftBus, "DBus Service ", " unavailable"},
    {Kind::MaskChanged, "Applying new log configuration: mask(0x", ""},
}};

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

bool endsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// What stands between the two ends of a known text.
std::optional<std::string_view> between(std::string_view text, const KnownText& known)
{
    if (text.size() < known.before.size() + known.after.size() || !startsWith(text, known.before) ||
        !endsWith(text, known.after))
    {
        return std::nullopt;
    }
    const std::size_t length = text.size() - known.before.size() - known.after.size();
    return text.substr(known.before.size(), length);
}

SupervisorEvent knownText(std::string_view message)
{
    constexpr int kHexadecimal = 16;
    constexpr int kDecimal = 10;
    for (const KnownText& known : kTexts)
    {
        const auto middle = between(message, known);
        if (!middle)
        {
            continue;
        }
        SupervisorEvent event{known.kind, "", std::string(*middle), 0, 0};
        if (known.kind == Kind::MaskChanged)
        {
            event.mask =
                static_cast<std::uint32_t>(std::strtoul(event.name.c_str(), nullptr, kHexadecimal));
            event.name.clear();
        }
        if (known.kind == Kind::Grace)
        {
            const std::size_t comma = event.name.find(", ");
            event.milliseconds = comma == std::string::npos
                                     ? 0
                                     : static_cast<int>(std::strtol(event.name.c_str() + comma + 2,
                                                                    nullptr, kDecimal));
            event.name = event.name.substr(0, comma);
        }
        return event;
    }
    return {};
}

/// "State::event", "State::event (service)" of a service's machine, "State::event service" of the
/// system's.
SupervisorEvent machineEvent(const std::string& message)
{
    const std::size_t colons = message.find("::");
    if (colons == std::string::npos || !startsWith(message, "Supr"))
    {
        return {};
    }
    const std::string state = message.substr(0, colons);
    const std::string rest = message.substr(colons + 2);
    const std::size_t blank = rest.find(' ');
    const std::string event = rest.substr(0, blank);
    std::string name = blank == std::string::npos ? "" : rest.substr(blank + 1);
    if (name.size() > 2 && name.front() == '(' && name.back() == ')')
    {
        name = name.substr(1, name.size() - 2);
        return {event == "entry"  ? Kind::ServiceEntry
                : event == "down" ? Kind::ServiceDown
                                  : Kind::None,
                state, name, 0, 0};
    }
    const Kind kind = event == "entry"           ? Kind::SystemEntry
                      : event == "serviceIsUp"   ? Kind::ServiceIsUp
                      : event == "serviceIsDown" ? Kind::ServiceIsDown
                                                 : Kind::None;
    return {kind, state, name, 0, 0};
}

} // namespace

SupervisorEvent supervisorEvent(const ReadRecord& record)
{
    if (!record.isRecord || record.source != kSupervisorSource)
    {
        return {};
    }
    // The states write at TRACE; a warning of theirs has the same form and tells no state.
    return record.level == "TRACE" && startsWith(record.message, "Supr")
               ? machineEvent(record.message)
               : knownText(record.message);
}

} // namespace orvo::ctl
