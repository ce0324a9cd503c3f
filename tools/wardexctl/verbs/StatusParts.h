#pragma once

#include "output/StyledLine.h"
#include "verbs/StatusView.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

// The parts of the status screen.

/// Verdict, family and supervisor.
StyledLine statusHeadline(const StatusView& view);

/// Empty, or that nothing is restarted.
std::vector<StyledLine> developerLines(const StatusView& view);

StyledLine serviceTitles();
/// mark: stands before the name.
StyledLine serviceLine(const StatusView& view, const ServiceView& service,
                       const std::string& mark = "");

/// Restart budget, and what comes next.
std::vector<StyledLine> outlookLines(const StatusView& view);

/// What the screen cannot tell, and why; that the watchdog was not fed.
std::vector<StyledLine> remarkLines(const StatusView& view);

} // namespace orvo::ctl
