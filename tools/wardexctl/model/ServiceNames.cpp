#include "model/ServiceNames.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/PingLimits.h"
#include "identification/ServicePaths.h"
#include "model/Periods.h"

namespace orvo::ctl
{

const std::array<NamedService, 4>& namedServices()
{
    static constexpr std::array<NamedService, 4> kServices = {
        {{kVistorBusName, kCorvaneName, kCorvaneScript, kCorvanePingTimeoutMs, true},
         {kPictorBusName, kPictorName, kPictorScript, kPictorPingTimeoutMs, true},
         {kWirlBusName, kWirlName, kWirlScript, kWirlPingTimeoutMs, false},
         {kQuorlBusName, kQuorlName, kQuorlScript, kQuorlPingIntervalMs, false}}};
    return kServices;
}

const NamedService* findService(const std::string& busName)
{
    for (const NamedService& service : namedServices())
    {
        if (busName == service.busName)
        {
            return &service;
        }
    }
    return nullptr;
}

double pingSeconds(const std::string& busName)
{
    const NamedService* service = findService(busName);
    return service != nullptr ? static_cast<double>(service->pingMs) / kMsPerSecond : 0;
}

std::optional<std::string> busNameOf(const std::string& word)
{
    for (const NamedService& service : namedServices())
    {
        const std::string busName = service.busName;
        if (word == busName || word == service.processName ||
            word == busName.substr(busName.rfind('.') + 1))
        {
            return busName;
        }
    }
    if (word.find('.') == std::string::npos)
    {
        return std::nullopt;
    }
    return word;
}

std::string shortNameOf(const std::string& busName)
{
    const NamedService* service = findService(busName);
    return service != nullptr ? service->processName : busName;
}

std::string offeredNames()
{
    std::string names;
    for (const NamedService& service : namedServices())
    {
        names += (names.empty() ? "" : ", ") + std::string(service.processName);
    }
    return names;
}

} // namespace orvo::ctl
