#pragma once

#include "log-reading/ReadRecord.h"
#include "log/DeviceClock.h"
#include "output/Output.h"

#include <QJsonObject>

#include <string>

namespace orvo::ctl
{

/// How a record looks to people: "05:38:46.123  12 s WARN  wardex[321] Bello is dead!!!" with its
/// wall time and its age. One that was cut ends in " [cut]"; one of an earlier life of the device
/// has no time.
std::string recordText(const Output& output, const ReadRecord& record, const DeviceClock& clock);

/// Without age and process id, and without colours: for a line of a screen.
std::string shortRecordText(const ReadRecord& record, const DeviceClock& clock);

/// How it looks to programs.
QJsonObject recordJson(const ReadRecord& record, const DeviceClock& clock);

/// "0 s", "12 s", "3 m", "2 h", "4 d"; at most five characters.
std::string ageText(double seconds);

/// The colour of a level.
Tone toneOfLevel(const std::string& level);

} // namespace orvo::ctl
