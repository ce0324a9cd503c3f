#include "FakeUdev.h"

#include <deque>

#include <libudev.h>

namespace
{
orvo::test::FakeUdev* g_fake = nullptr;

void note(const std::string& call)
{
    g_fake->calls.push_back(call);
}

template <typename Handle>
Handle* opened(Handle* handle)
{
    ++g_fake->openHandles;
    return handle;
}

template <typename Handle>
Handle* closed(Handle* handle, const std::string& call)
{
    note(call);
    --g_fake->openHandles;
    delete handle;
    return nullptr;
}
} // namespace

namespace orvo::test
{

FakeUdev::FakeUdev()
{
    g_fake = this;
}

FakeUdev::~FakeUdev()
{
    g_fake = nullptr;
}

} // namespace orvo::test

struct udev
{
};
struct udev_monitor
{
};
struct udev_list_entry
{
    orvo::test::FakeUdev::Device device;
    udev_list_entry* next;
};
struct udev_enumerate
{
    std::deque<udev_list_entry> entries;
};
struct udev_device
{
    orvo::test::FakeUdev::Device device;
};

struct udev* udev_new()
{
    note("udev_new");
    return g_fake->refusesContext ? nullptr : opened(new struct udev);
}

struct udev* udev_unref(struct udev* context)
{
    return closed(context, "udev_unref");
}

struct udev_monitor* udev_monitor_new_from_netlink(struct udev*, const char* name)
{
    note(std::string("monitor ") + name);
    return g_fake->refusesMonitor ? nullptr : opened(new udev_monitor);
}

int udev_monitor_filter_add_match_subsystem_devtype(struct udev_monitor*, const char* subsystem,
                                                    const char* devtype)
{
    note(std::string("monitor filter ") + subsystem + (devtype != nullptr ? " of a type" : ""));
    return 0;
}

int udev_monitor_enable_receiving(struct udev_monitor*)
{
    note("monitor enable");
    return 0;
}

struct udev_monitor* udev_monitor_unref(struct udev_monitor* monitor)
{
    return closed(monitor, "monitor unref");
}

struct udev_enumerate* udev_enumerate_new(struct udev*)
{
    note("enumerate");
    return g_fake->refusesEnumeration ? nullptr : opened(new udev_enumerate);
}

int udev_enumerate_add_match_subsystem(struct udev_enumerate*, const char* subsystem)
{
    note(std::string("enumerate match ") + subsystem);
    return 0;
}

int udev_enumerate_scan_devices(struct udev_enumerate* enumeration)
{
    note("enumerate scan");
    // Filled from the end, because each entry knows the one after it.
    std::deque<udev_list_entry>& entries = enumeration->entries;
    for (auto device = g_fake->devices.rbegin(); device != g_fake->devices.rend(); ++device)
    {
        entries.push_front({*device, entries.empty() ? nullptr : &entries.front()});
    }
    return 0;
}

struct udev_list_entry* udev_enumerate_get_list_entry(struct udev_enumerate* enumeration)
{
    return enumeration->entries.empty() ? nullptr : &enumeration->entries.front();
}

struct udev_enumerate* udev_enumerate_unref(struct udev_enumerate* enumeration)
{
    return closed(enumeration, "enumerate unref");
}

struct udev_list_entry* udev_list_entry_get_next(struct udev_list_entry* entry)
{
    return entry->next;
}

const char* udev_list_entry_get_name(struct udev_list_entry* entry)
{
    return entry->device.syspath.c_str();
}

struct udev_device* udev_device_new_from_syspath(struct udev*, const char* syspath)
{
    note(std::string("device ") + syspath);
    for (const orvo::test::FakeUdev::Device& device : g_fake->devices)
    {
        if (device.syspath == syspath && !device.vanished)
        {
            return opened(new udev_device{device});
        }
    }
    return nullptr;
}

const char* udev_device_get_driver(struct udev_device* device)
{
    return device->device.driver.empty() ? nullptr : device->device.driver.c_str();
}

const char* udev_device_get_syspath(struct udev_device* device)
{
    return device->device.syspath.c_str();
}

struct udev_device* udev_device_unref(struct udev_device* device)
{
    return closed(device, "device unref");
}
