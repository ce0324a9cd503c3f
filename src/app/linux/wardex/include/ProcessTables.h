#pragma once

#include "ServiceInfo.h"

#include <QDateTime>
#include <QString>

#include <map>
#include <set>
#include <vector>

namespace orvo
{

class SuprState;

// What this room keeps for the whole process. All of it is defined in one source file, in the order
// below, so that it is made before main in exactly this order and destroyed in the reverse order.
// Threads: event loop only; nothing is locked.

/// The supervised services of this device by bus name; owns the service objects.
extern std::map<QString, ServiceInfo::ServicePtr> g_services;

/// The current state object of each per-service machine by bus name; borrowed from the machines.
extern std::map<QString, SuprState*> g_activeStates;

/// The services that reported up and have not reported down since.
extern std::set<QString> g_upServices;

/// The services that must be up for the device to be stable; never changed. A constant that is
/// named as the set that it is compared with.
extern const std::set<QString> g_knownServices; // NOLINT(readability-identifier-naming)

/// Local time of each package restart, oldest first; never shortened.
extern std::vector<QDateTime> g_restartHistory;

/// Ticks spent in the unstable state since the last package restart. It outlives the state object:
/// a device that is stable for a moment does not start counting anew.
extern quint32 g_unstableTicks;

} // namespace orvo
