#pragma once

#include "logger/LogDefaults.h"

#include <cstdint>
#include <string>

namespace orvo::Logger
{

/// What steers a logger.
struct LogSettings
{
    std::string segvRegex;
    int maxEntries{kDefaultMaxEntries};
    std::uint32_t mask{kDefaultMask};
};

enum class ConfigVerdict
{
    Taken,
    Ignored, ///< for another program or process, or for nobody
    NotJson
};

/// Reads a configuration text and, when it is for this program and process, changes the settings
/// that it gives; otherwise they stay as they are.
///
/// Shape:   {"source":"wardex" or "all", "pid":817, "mask":240, "max":10000, "segvregex":"..."};
///          source is required, other keys and values of another type are ignored.
/// Units:   numbers lose their fraction. A maximum, or a mask, that no 32-bit word can hold is
///          ignored like a value of another type; a mask of -1 means all levels.
ConfigVerdict readConfiguration(const char* text, const std::string& source, int pid,
                                LogSettings& settings);

/// The text under which a configuration is stored. A mask below 0, a maximum below 1 and an empty
/// pattern are left out. Source and pattern go in as they are: escaping is up to who gives them.
std::string configurationText(const std::string& source, int mask, int maxEntries,
                              const std::string& pattern);

} // namespace orvo::Logger
