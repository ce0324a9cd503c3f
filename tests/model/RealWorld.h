#pragma once

#include "Surroundings.h"

#include <cstdint>

namespace orvo::model
{

/// From here on the process is in this world: pings, child processes, shell commands, the watchdog,
/// syslog and the log's records reach it, and nothing of the machine that the test runs on. The
/// stored configuration of the log has this mask.
///
/// Borrows: the world.
void enterRealWorld(Surroundings* world, std::uint32_t logMask);

/// The world that the process is in; there must be one.
Surroundings& realWorld();

} // namespace orvo::model
