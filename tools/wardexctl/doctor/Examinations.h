#pragma once

#include "doctor/Finding.h"
#include "log-reading/ReadRecord.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

// What doctor looks at; each adds what it finds. Nothing here opens the watchdog device, which
// would arm it, and nothing changes the device.

/// The bus, the owner of the supervisor's name, and whether it answers; false when it does not.
bool examineBus(Findings& findings);

/// Both Redis servers.
void examineRedis(Findings& findings);

/// The scripts of the services of a family ("" for all) and of the package.
void examineScripts(const std::string& family, Findings& findings);

/// The node, its time-out against the longest script run in the records, and missed feeds.
void examineWatchdog(const std::vector<ReadRecord>& records, Findings& findings);

/// The marker files, against the mode that the supervisor started in.
void examineDeveloperMode(const std::vector<ReadRecord>& records, Findings& findings);

/// Each EEPROM and the family that follows, against the one that the supervisor found.
/// Answers the family; empty for none.
std::string examineIdentity(const std::vector<ReadRecord>& records, Findings& findings);

/// Whether the wall clock was stepped since the log's server started.
void examineClock(Findings& findings);

} // namespace orvo::ctl
