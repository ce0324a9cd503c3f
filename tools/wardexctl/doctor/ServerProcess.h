#pragma once

#include <optional>

namespace orvo::ctl
{

/// The process that listens at a Unix socket; nothing when none does.
std::optional<int> serverProcess(const char* path);

/// Seconds since a process started, by a clock that nobody steps; nothing when it has ended.
std::optional<double> ageOfProcess(int process);

} // namespace orvo::ctl
