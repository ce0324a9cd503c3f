// A program that owns a bus name and does nothing else, with the smallest bus library there is.
#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdlib>

int main()
{
    sd_bus* bus = nullptr;
    if (sd_bus_default_system(&bus) < 0 || sd_bus_request_name(bus, "com.orvo.wardex", 0) < 0)
    {
        return EXIT_FAILURE;
    }
    while (sd_bus_process(bus, nullptr) >= 0)
    {
        sd_bus_wait(bus, UINT64_MAX);
    }
    sd_bus_unref(bus);
    return EXIT_SUCCESS;
}
