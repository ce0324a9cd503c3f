#pragma once

#include "log-reading/ReadRecord.h"

#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// The longest time for which a script kept the supervisor from feeding the watchdog.
struct ScriptRun
{
    double seconds{0};
    std::string what; ///< "the scripts of pictor", "the package script"
};

/// From the record before a script to the supervisor's next one; nothing when the log shows none.
std::optional<ScriptRun> longestScriptRun(const std::vector<ReadRecord>& records);

} // namespace orvo::ctl
