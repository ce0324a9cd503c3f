#pragma once

#include "output/Output.h"

namespace orvo::ctl
{

/// The live screen, or one object per second for programs, until it is ended. Answers the exit
/// status; a signal ends the program as any.
int runTop(const Output& output);

} // namespace orvo::ctl
