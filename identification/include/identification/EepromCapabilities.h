#pragma once

namespace orvo
{

/// A property of the camera that its identification EEPROMs decide. The numbers are shared with the
/// device's other programs; those without a name here are not asked for by the supervisor.
using MFCapability_t = unsigned int;

constexpr MFCapability_t kCapabilityZk4xx = 9;
constexpr MFCapability_t kCapabilityZm7xx = 10;
constexpr MFCapability_t kCapabilityZq9xx = 11;

/// Whether this device has the capability: by the type code of a module, by the article number of
/// the main board, or by default.
///
/// A capability that no table describes is present, and the bus is not touched for it: programs may
/// ask for what only other devices leave out.
///
/// Threads: main thread, during start-up; blocks for the transfer of each record, nothing is
/// cached. Errors:  an EEPROM that is missing, unreadable or damaged counts as a capability that is
/// absent.
///          Nothing is logged.
[[nodiscard]] bool hasCapability(MFCapability_t capability);

} // namespace orvo
