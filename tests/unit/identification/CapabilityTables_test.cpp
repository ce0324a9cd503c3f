#include "identification/CapabilityTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace orvo
{

using testing::ElementsAre;

namespace
{
struct ElementRow
{
    MFCapability_t capability;
    int eepromId;
    std::vector<std::string> typeCodes;
};

void PrintTo(const ElementRow& row, std::ostream* stream)
{
    *stream << "capability " << row.capability;
}

/// What of() makes of each row, in the table's order.
template <typename Table, typename Of>
auto ofEachRow(const Table& table, Of of)
{
    std::vector<decltype(of(*table.begin()))> results(table.size());
    std::transform(table.begin(), table.end(), results.begin(), of);
    return results;
}
} // namespace

class ElementTable : public testing::TestWithParam<ElementRow>
{
};

TEST_P(ElementTable, NamesTheModuleAndItsTypeCodes)
{
    const auto element = kCapabilityElements.find(GetParam().capability);
    ASSERT_NE(kCapabilityElements.end(), element);
    EXPECT_EQ(GetParam().eepromId, element->second.eepromId);
    EXPECT_EQ(GetParam().typeCodes, element->second.typeCodes);
}

INSTANTIATE_TEST_SUITE_P(
    Row, ElementTable,
    testing::Values(ElementRow{0, 20, {"300", "301", "303"}}, ElementRow{1, 20, {"310", "311"}},
                    ElementRow{2, 16, {"341"}}, ElementRow{3, 16, {"342"}},
                    ElementRow{9, 16, {"340", "341", "342", "343", "350", "351"}},
                    ElementRow{10, 16, {"200", "201"}}, ElementRow{11, 18, {"101", "161", "162"}},
                    ElementRow{12, 16, {"351"}}),
    [](const auto& row) { return "Capability" + std::to_string(row.param.capability); });

TEST(ElementTableAsAWhole, HasNoFurtherRow)
{
    EXPECT_EQ(8U, kCapabilityElements.size());
}

TEST(ArticleTable, HasTheCapabilities4To8)
{
    EXPECT_THAT(ofEachRow(kCapabilityArticles, [](const auto& row) { return row.first; }),
                ElementsAre(4, 5, 6, 7, 8));
}

TEST(ArticleTable, HasListsOfTheOrderedLengths)
{
    EXPECT_THAT(ofEachRow(kCapabilityArticles, [](const auto& row) { return row.second.size(); }),
                ElementsAre(11, 11, 12, 24, 10));
}

TEST(ArticleTable, Names34DistinctArticlesOfSixCharacters)
{
    std::set<std::string> articles;
    for (const auto& [capability, list] : kCapabilityArticles)
    {
        const std::set<std::string> distinct(list.begin(), list.end());
        EXPECT_EQ(list.size(), distinct.size()) << "repeated in capability " << capability;
        for (const std::string& article : list)
        {
            EXPECT_EQ(6U, article.size()) << article;
            articles.insert(article);
        }
    }
    EXPECT_EQ(34U, articles.size());
}

} // namespace orvo
