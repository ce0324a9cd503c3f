#include "EepromImage.h"
#include "identification/EepromRecord.h"

#include <gtest/gtest.h>

namespace orvo
{

using test::EepromImage;

class ArticleNumber : public testing::Test
{
protected:
    [[nodiscard]] std::string filled() const { return {m_text.begin(), m_text.end()}; }

    const EepromImage m_mainBoard = EepromImage('M', "161").article("O3X104").revision("AB");
    const std::string m_expected = std::string("O3X104\0AB\0", 10);
    ArticleText m_text = {'?', '?', '?', '?', '?', '?', '?', '?', '?', '?'};
};

TEST_F(ArticleNumber, IsFollowedByTheRevisionEachWithItsTerminator)
{
    EXPECT_TRUE(extractArticleNumber(18, m_mainBoard.bytes(), m_text));
    EXPECT_EQ(m_expected, filled());
}

TEST_F(ArticleNumber, IsFilledEvenIfTheRecordIsDamaged)
{
    EXPECT_FALSE(extractArticleNumber(18, m_mainBoard.damagedAt(127, 0x01), m_text));
    EXPECT_EQ(m_expected, filled());
}

TEST_F(ArticleNumber, IsFilledEvenIfTheRecordIsOfAnotherModule)
{
    EXPECT_FALSE(extractArticleNumber(
        18, EepromImage('F', "161").article("O3X104").revision("AB").bytes(), m_text));
    EXPECT_EQ(m_expected, filled());
}

TEST_F(ArticleNumber, IsNotTakenFromAnyOtherEeprom)
{
    const std::string untouched = filled();
    for (const int id : {0, 15, 16, 17, 19, 20, 21})
    {
        EXPECT_FALSE(extractArticleNumber(id, m_mainBoard.bytes(), m_text)) << id;
        EXPECT_EQ(untouched, filled()) << id;
    }
}

} // namespace orvo
