#include "Capabilities.h"
#include "I2cTree.h"
#include "identification/CapabilityTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace orvo
{

using test::articleCapabilities;
using test::EepromImage;
using test::I2cTree;
using testing::Contains;
using testing::IsEmpty;

namespace
{
std::vector<MFCapability_t> describedFor(const std::string& article)
{
    std::vector<MFCapability_t> capabilities;
    for (const auto& [capability, articles] : kCapabilityArticles)
    {
        if (std::count(articles.begin(), articles.end(), article) != 0)
        {
            capabilities.push_back(capability);
        }
    }
    return capabilities;
}

std::set<std::string> allArticles()
{
    std::set<std::string> all;
    for (const auto& [capability, articles] : kCapabilityArticles)
    {
        all.insert(articles.begin(), articles.end());
    }
    return all;
}
} // namespace

class ArticleCapability : public testing::Test
{
protected:
    ArticleCapability() { m_tree.fit("2-0053", mainBoard(m_article)); }

    static EepromImage mainBoard(const std::string& article)
    {
        // A type code that no capability asks for: the article number alone decides.
        return EepromImage('M', "999").article(article).revision("00");
    }

    I2cTree m_tree;
    const std::string m_article = kCapabilityArticles.at(8).front();
};

TEST_F(ArticleCapability, FollowsTheListsForEveryArticle)
{
    for (const std::string& article : allArticles())
    {
        m_tree.write("2-0053", mainBoard(article).bytes());
        EXPECT_EQ(describedFor(article), articleCapabilities()) << article;
    }
}

TEST_F(ArticleCapability, IsAbsentForAnArticleOfNoList)
{
    m_tree.write("2-0053", mainBoard("000000").bytes());
    EXPECT_THAT(articleCapabilities(), IsEmpty());
}

TEST_F(ArticleCapability, DoesNotDependOnTheRevision)
{
    m_tree.write("2-0053", mainBoard(m_article).revision("ZZ").bytes());
    EXPECT_THAT(articleCapabilities(), Contains(8));
}

TEST_F(ArticleCapability, ComparesTheWholeArticleNumber)
{
    std::string other = m_article;
    other.back() = '?';
    m_tree.write("2-0053", mainBoard(other).bytes());
    EXPECT_THAT(articleCapabilities(), IsEmpty());
    other = m_article;
    other.front() = '?';
    m_tree.write("2-0053", mainBoard(other).bytes());
    EXPECT_THAT(articleCapabilities(), IsEmpty());
}

TEST_F(ArticleCapability, IsAbsentIfTheMainBoardsRecordIsDamaged)
{
    ASSERT_THAT(articleCapabilities(), Contains(8));
    m_tree.write("2-0053", mainBoard(m_article).damagedAt(127, 0x01));
    EXPECT_THAT(articleCapabilities(), IsEmpty());
}

TEST_F(ArticleCapability, IsAbsentWithoutTheMainBoardsRecord)
{
    m_tree.vanish("2-0053");
    EXPECT_THAT(articleCapabilities(), IsEmpty());
}

TEST_F(ArticleCapability, IsNotTakenFromAnotherModule)
{
    m_tree.vanish("2-0053");
    m_tree.fit("2-0054", EepromImage('F', "341").article(m_article));
    EXPECT_THAT(articleCapabilities(), IsEmpty());
}

} // namespace orvo
