#include "identification/ServiceRegistration.h"

#include "ServiceInfo.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/CorvaneService.h"
#include "dbus-proxy/PictorService.h"
#include "dbus-proxy/QUORLService.h"
#include "dbus-proxy/WIRLService.h"
#include "identification/EepromCapabilities.h"
#include "identification/ServicePaths.h"
#include "logger/RedisLogger.h"

#include <utility>

namespace orvo
{

ServiceRegistration::ServiceRegistration(Logger::RedisLogger* logger) : m_logger(logger) {}

bool ServiceRegistration::registerServices()
{
    // All of them first, whatever the family: those that it does not run end with this function.
    auto corvane = ServiceInfo::makeService<CorvaneService>(kCorvaneName, kCorvaneScript);
    auto pictor = ServiceInfo::makeService<PictorService>(kPictorName, kPictorScript);
    auto wirl = ServiceInfo::makeService<WIRLService>(kWirlName, kWirlScript);
    auto quorl = ServiceInfo::makeService<QUORLService>(kQuorlName, kQuorlScript);

    // "Registerinng" is what the field tools look for.
    if (hasCapability(kCapabilityZk4xx))
    {
        m_logger->log(Logger::WARN, "Registerinng services for the ZK4XX family of devices");
        ServiceInfo::addService(kVistorBusName, std::move(corvane));
        ServiceInfo::addService(kPictorBusName, std::move(pictor));
        ServiceInfo::addService(kWirlBusName, std::move(wirl));
        ServiceInfo::addService(kQuorlBusName, std::move(quorl));
        return true;
    }
    if (hasCapability(kCapabilityZm7xx))
    {
        m_logger->log(Logger::WARN, "Registerinng services for the ZM7xx family of devices");
        ServiceInfo::addService(kWirlBusName, std::move(wirl));
        return true;
    }
    if (hasCapability(kCapabilityZq9xx))
    {
        m_logger->log(Logger::WARN, "Registerinng services for the ZQ9XX family of devices");
        ServiceInfo::addService(kVistorBusName, std::move(corvane));
        ServiceInfo::addService(kPictorBusName, std::move(pictor));
        return true;
    }
    m_logger->log(Logger::WARN, "Unable to detect the device family");
    return false;
}

} // namespace orvo
