#include "ProcessTables.h"

#include "dbus-proxy/BusNames.h"

namespace orvo
{

std::map<QString, ServiceInfo::ServicePtr> g_services;
std::map<QString, SuprState*> g_activeStates;
std::set<QString> g_upServices;
const std::set<QString> g_knownServices{QLatin1String(kVistorBusName),
                                        QLatin1String(kPictorBusName)};
std::vector<QDateTime> g_restartHistory;
quint32 g_unstableTicks = 0;

} // namespace orvo
