#pragma once

#include "SupervisionLimits.h"

namespace orvo::ctl
{

inline constexpr int kMsPerSecond = 1000;

/// Period of the system's machine.
inline constexpr double kTickSeconds = static_cast<double>(kSystemTickMs) / kMsPerSecond;

} // namespace orvo::ctl
