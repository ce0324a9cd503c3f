#pragma once

#include "output/Output.h"
#include "output/Terminal.h"
#include "timeline/TimelineView.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

/// A timeline in lines of text: the wall times, a row for the device and one per service with a row
/// of letters below for what was done, the ages, what the signs mean, and the last actions in
/// words. Without colours the signs tell all; no line is wider than the terminal.
std::vector<std::string> timelineLines(const Output& output, const TimelineView& view,
                                       const Terminal& terminal);

} // namespace orvo::ctl
