#pragma once

#include "output/Output.h"

#include <string>

namespace orvo::ctl
{

/// What the verb timeline is to show, as said on the command line.
struct TimelineWords
{
    std::string since; ///< as of LogWords; empty: from the first record on
    std::string file;  ///< of the picture; empty: as text
};

/// Machine states, restarts and reboots over time: as text, or as a picture in a file. Answers the
/// exit status of the program.
int showTimeline(const Output& output, const TimelineWords& words);

} // namespace orvo::ctl
