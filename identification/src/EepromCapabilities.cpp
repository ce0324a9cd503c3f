#include "identification/EepromCapabilities.h"

#include "identification/CapabilityTables.h"
#include "identification/EepromReader.h"
#include "identification/EepromRecord.h"

#include <algorithm>

namespace orvo
{

namespace
{
bool contains(const std::vector<std::string>& accepted, const std::string& text)
{
    return std::find(accepted.begin(), accepted.end(), text) != accepted.end();
}

bool isModuleOfType(const MFEEPROMCapElem& element)
{
    EepromRecord record{};
    return readEeprom(element.eepromId, record.data(), record.size()) &&
           isValidEepromRecord(element.eepromId, record) &&
           contains(element.typeCodes, eepromTypeCode(record));
}

bool isArticleOf(const std::vector<std::string>& articles)
{
    EepromRecord record{};
    ArticleText article{};
    return readEeprom(kEepromM, record.data(), record.size()) &&
           extractArticleNumber(kEepromM, record, article) && contains(articles, article.data());
}
} // namespace

bool hasCapability(MFCapability_t capability)
{
    const auto element = kCapabilityElements.find(capability);
    if (element != kCapabilityElements.end() && !isModuleOfType(element->second))
    {
        return false;
    }
    const auto articles = kCapabilityArticles.find(capability);
    return articles == kCapabilityArticles.end() || isArticleOf(articles->second);
}

} // namespace orvo
