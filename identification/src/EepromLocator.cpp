#include "identification/EepromLocator.h"

#include "UdevHandles.h"
#include "identification/EepromLayout.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace orvo
{

const char* g_i2cDeviceNameFormat = kI2cDeviceName;

namespace
{
using DeviceName = std::array<char, kI2cDeviceNameSize>;

bool formatDeviceName(const EepromModule& module, DeviceName& name)
{
    // The format is exchangeable by contract, so the compiler cannot see it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length =
        std::snprintf(name.data(), name.size(), g_i2cDeviceNameFormat, module.deviceNumber);
#pragma GCC diagnostic pop
    return length > 0 && static_cast<std::size_t>(length) < name.size();
}

/// Listens as any program does that keeps track of the bus, for as long as it lives. The look-up
/// reads no event and needs none: a machine without a udev netlink finds its EEPROMs all the same.
UdevMonitor watchEepromBus(const UdevContext& context)
{
    UdevMonitor monitor(udev_monitor_new_from_netlink(context.get(), kUdevMonitorSource));
    if (monitor)
    {
        (void)udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), kEepromSubsystem,
                                                              nullptr);
        (void)udev_monitor_enable_receiving(monitor.get());
    }
    return monitor;
}

bool isEepromDevice(udev_device* device)
{
    const char* driver = udev_device_get_driver(device);
    return driver != nullptr && std::strcmp(driver, kEepromDriver) == 0;
}

bool findInEnumeration(const UdevContext& context, const DeviceName& name, std::string& syspath)
{
    const UdevEnumerate enumeration(udev_enumerate_new(context.get()));
    if (!enumeration)
    {
        return false;
    }
    (void)udev_enumerate_add_match_subsystem(enumeration.get(), kEepromSubsystem);
    (void)udev_enumerate_scan_devices(enumeration.get());

    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumeration.get()))
    {
        const UdevDevice device(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        // A device may leave the bus between the scan and here.
        if (!device || !isEepromDevice(device.get()))
        {
            continue;
        }
        const std::string candidate = udev_device_get_syspath(device.get());
        if (candidate.find(name.data()) != std::string::npos)
        {
            syspath = candidate;
            return true;
        }
    }
    return false;
}
} // namespace

bool locateEeprom(int eepromId, std::string& syspath)
{
    const EepromModule* module = findEepromModule(eepromId);
    DeviceName name{};
    if (module == nullptr || !formatDeviceName(*module, name))
    {
        return false;
    }
    const UdevContext context(udev_new());
    if (!context)
    {
        return false;
    }
    const UdevMonitor monitor = watchEepromBus(context);
    return findInEnumeration(context, name, syspath);
}

} // namespace orvo
