#pragma once

#include "identification/EepromCapabilities.h"

#include <vector>

namespace orvo::test
{

/// Those of the capabilities first..last that the device has, ascending.
inline std::vector<MFCapability_t> capabilitiesBetween(MFCapability_t first, MFCapability_t last)
{
    std::vector<MFCapability_t> present;
    for (MFCapability_t capability = first; capability <= last; ++capability)
    {
        if (hasCapability(capability))
        {
            present.push_back(capability);
        }
    }
    return present;
}

/// Those that a module's type code decides.
inline std::vector<MFCapability_t> moduleCapabilities()
{
    std::vector<MFCapability_t> present = capabilitiesBetween(0, 3);
    const std::vector<MFCapability_t> more = capabilitiesBetween(9, 12);
    present.insert(present.end(), more.begin(), more.end());
    return present;
}

/// Those that the main board's article number decides.
inline std::vector<MFCapability_t> articleCapabilities()
{
    return capabilitiesBetween(4, 8);
}

} // namespace orvo::test
