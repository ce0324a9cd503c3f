#pragma once

#include "identification/EepromCapabilities.h"

#include <map>
#include <string>
#include <vector>

namespace orvo
{

/// Which module decides a capability, and by which type codes.
struct MFEEPROMCapElem
{
    int eepromId;                       ///< 16..20, see EepromLayout.h.
    std::vector<std::string> typeCodes; ///< Three characters each; any of them will do.
};

/// The capabilities that a module's type code decides. Built before main, never changed.
extern const std::map<MFCapability_t, MFEEPROMCapElem> kCapabilityElements;

/// The capabilities that the main board's article number decides, with the article numbers (six
/// characters each) that have them. Built before main, never changed; the numbers are product data
/// from data/ArticleNumbers.inc.
extern const std::map<MFCapability_t, std::vector<std::string>> kCapabilityArticles;

} // namespace orvo
