#include "identification/CapabilityTables.h"

#include "identification/EepromLayout.h"

namespace orvo
{

const std::map<MFCapability_t, MFEEPROMCapElem> kCapabilityElements = {
    {0, {kEepromA, {"300", "301", "303"}}},
    {1, {kEepromA, {"310", "311"}}},
    {2, {kEepromF, {"341"}}},
    {3, {kEepromF, {"342"}}},
    {kCapabilityZk4xx, {kEepromF, {"340", "341", "342", "343", "350", "351"}}},
    {kCapabilityZm7xx, {kEepromF, {"200", "201"}}},
    {kCapabilityZq9xx, {kEepromM, {"101", "161", "162"}}},
    {12, {kEepromF, {"351"}}},
};

const std::map<MFCapability_t, std::vector<std::string>> kCapabilityArticles = {
#include "ArticleNumbers.inc"
};

} // namespace orvo
