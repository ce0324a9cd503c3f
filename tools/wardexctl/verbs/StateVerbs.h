#pragma once

#include "output/Output.h"

#include <string>

namespace orvo::ctl
{

// Verbs that explain. Each answers the exit status of the program; an empty name means the device.

/// One screen: how the device is, and what comes next. kOk only when it, or the service, is up.
int showStatus(const Output& output, const std::string& name);

/// The chain of events behind the last restart, package restart or reboot.
int explainWhy(const Output& output, const std::string& name);

} // namespace orvo::ctl
