#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// What is fixed about a service of the device.
struct NamedService
{
    const char* busName;
    const char* processName;
    const char* script;
    int pingMs;    ///< period and time-out of its pings
    bool isJudged; ///< has a machine, and decides whether the device is stable
};

/// All services that a device may run, the judged ones first.
const std::array<NamedService, 4>& namedServices();

/// By bus name; null for a name that no device knows.
const NamedService* findService(const std::string& busName);

/// Seconds between the pings of a service; 0 for a name that no device knows.
double pingSeconds(const std::string& busName);

/// The bus name that a person means: itself, its last word ("vistor"), or the name of the process
/// ("corvane"). Any other name with a point stands for itself; nothing for the rest.
std::optional<std::string> busNameOf(const std::string& word);

/// How people call it: the name of its process, or the name itself when it has none here.
std::string shortNameOf(const std::string& busName);

/// The short names, for a message that has to offer them.
std::string offeredNames();

} // namespace orvo::ctl
