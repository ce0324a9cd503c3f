#pragma once

namespace bench
{

// The message that every side of a comparison writes: of the middle length of the device's own, and
// made as these are made, from the origin, a service and its script.

constexpr char kFormat[] = "%s: The service %s does not reply any more and is started anew by %s";
constexpr char kOrigin[] = "ServiceAction";
constexpr char kService[] = "com.orvo.pictor";
constexpr char kScript[] = "init.d/pictor";
/// Characters of the message.
constexpr int kMessageLength = 103;

constexpr char kSource[] = "wardex";
constexpr char kList[] = "LOG:ENTRIES";
/// Records that the list keeps: the logger's start value.
constexpr int kListLength = 10000;

/// A finished record of the message, as it stands in the list.
constexpr char kRecord[] =
    R"({"T":"123456.0345", "P":"12345", "C":"WARN", "S":"wardex", "M":"ServiceAction: The service )"
    R"(com.orvo.pictor does not reply any more and is started anew by init.d\/pictor"})";
constexpr unsigned long kRecordLength = sizeof kRecord - 1;

} // namespace bench
