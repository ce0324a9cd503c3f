#pragma once

#include "output/Output.h"

#include <string>

namespace orvo::ctl
{

/// What loglevel is to do.
struct LogLevelWords
{
    std::string source; ///< empty: show all
    std::string levels; ///< empty: show
    std::string span;   ///< a duration, after which the former mask comes back; empty: stays
    std::string after;  ///< a duration to wait first
    bool saves{false};
    bool fallsBack{false}; ///< is the process that takes an earlier change back
};

/// Shows the masks, or sets one live.
int logLevel(const Output& output, const LogLevelWords& words);

} // namespace orvo::ctl
