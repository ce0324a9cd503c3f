#pragma once

#include "output/Output.h"

namespace orvo::ctl
{

/// Checks the installation and says what to do. kOk without trouble, kSupervisorSilent when the
/// supervisor does not answer, else kFailed.
int runDoctor(const Output& output);

} // namespace orvo::ctl
