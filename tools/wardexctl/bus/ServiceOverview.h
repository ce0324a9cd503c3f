#pragma once

#include "bus/SupervisorClient.h"

#include <QStringList>

#include <map>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// A service as the supervisor tells it on the bus.
struct ServiceView
{
    std::string name;    ///< on the bus
    std::string process; ///< "up" or "down" by the process list, "" when it has no process name
    bool isJudged{false};
    bool isListed{false}; ///< on the bus, by the supervisor's list
};

/// What the supervisor tells about its services.
struct ServiceOverview
{
    BusAnswer answer; ///< of the last call; the rest only counts when that was answered
    std::vector<ServiceView> services; ///< without those that this device does not run

    [[nodiscard]] bool areJudgedListed() const;
};

/// Asks for all services that a device may run.
ServiceOverview askForServices();

/// Adds a service by the supervisor's answers about its status and about all names; nothing when
/// this device does not run it.
void addService(ServiceOverview& overview, const std::string& busName, const BusAnswer& status,
                const QStringList& listed);

/// Asks for one; without services when this device does not run it.
ServiceOverview askForService(const std::string& busName);

} // namespace orvo::ctl
