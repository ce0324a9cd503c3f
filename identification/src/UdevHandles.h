#pragma once

#include <memory>

#include <libudev.h>

namespace orvo
{

/// Gives a reference to a libudev object back with the call that belongs to its type.
template <auto kUnref>
struct UdevUnref
{
    template <typename Handle>
    void operator()(Handle* handle) const noexcept
    {
        (void)kUnref(handle);
    }
};

using UdevContext = std::unique_ptr<udev, UdevUnref<udev_unref>>;
using UdevMonitor = std::unique_ptr<udev_monitor, UdevUnref<udev_monitor_unref>>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, UdevUnref<udev_enumerate_unref>>;
using UdevDevice = std::unique_ptr<udev_device, UdevUnref<udev_device_unref>>;

} // namespace orvo
