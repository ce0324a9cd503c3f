#include "quorl/Quorl.h"

#include "Frame.h"
#include "QuorlFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>

namespace orvo
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

} // namespace

class GetConfig : public test::QuorlFixture
{
protected:
    /// The result; the text is in m_text when the out argument was touched.
    std::int32_t ask(const char* item)
    {
        char untouched = 0;
        char* value = &untouched;
        const std::int32_t result = quorl_getConfig(item, &value);
        m_text.reset();
        if (value != &untouched)
        {
            const std::unique_ptr<char, decltype(&std::free)> owned(value, &std::free);
            m_text = owned.get();
        }
        return result;
    }

    std::optional<std::string> m_text;
};

TEST_F(GetConfig, SendsTheItemAndReturnsItsValueWithTheResultWord)
{
    m_server.answersConfig("192.168.0.69", 12);
    EXPECT_EQ(12, ask("Bind-Address"));
    EXPECT_EQ("192.168.0.69", m_text);
    EXPECT_THAT(m_server.requests(), ElementsAre(test::frame("get-config")));
    EXPECT_THAT(m_log.messages(), IsEmpty());
}

TEST_F(GetConfig, CutsTheItemTo127Characters)
{
    const std::string item(200, 'i');
    EXPECT_EQ(7, ask(item.c_str()));
    EXPECT_THAT(m_server.requests(),
                ElementsAre(std::string("\x80\x00\x04\x00", 4) + std::string(127, 'i') + '\0'));
}

TEST_F(GetConfig, SendsAnItemOf127CharactersWholeAndNoneOf128)
{
    const std::string longest = std::string(127, 'i') + '\0';
    EXPECT_EQ(7, ask(std::string(127, 'i').c_str()));
    EXPECT_EQ(7, ask(std::string(128, 'i').c_str()));
    EXPECT_EQ(longest, m_server.requests().at(0).substr(4));
    EXPECT_EQ(longest, m_server.requests().at(1).substr(4));
}

TEST_F(GetConfig, LeavesTheOutArgumentUntouchedWhenTheResultWordIsZero)
{
    m_server.answersConfig("nobody sees this", 0);
    EXPECT_EQ(0, ask("Bind-Address"));
    EXPECT_EQ(std::nullopt, m_text);
}

TEST_F(GetConfig, PassesANegativeResultWordOnTogetherWithTheText)
{
    m_server.answersConfig("why", -1);
    EXPECT_EQ(-1, ask("Bind-Address"));
    EXPECT_EQ("why", m_text);
}

TEST_F(GetConfig, ReturnsAnEmptyTextWhenOnlyTheResultWordIsSet)
{
    m_server.answersConfig("", std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(std::numeric_limits<std::int32_t>::max(), ask("Bind-Address"));
    EXPECT_EQ("", m_text);
}

TEST_F(GetConfig, ReturnsAValueThatFillsItsFieldToTheLastByte)
{
    for (const std::size_t length : {1023U, 1024U})
    {
        const std::string value(length, 'v');
        m_server.answersConfig(value, static_cast<std::int32_t>(length));
        EXPECT_EQ(static_cast<std::int32_t>(length), ask("Bind-Address"));
        EXPECT_EQ(value, m_text);
    }
}

TEST_F(GetConfig, RefusesACallWithoutAnItem)
{
    EXPECT_EQ(-1, ask(nullptr));
    EXPECT_EQ(std::nullopt, m_text);
    EXPECT_THAT(m_server.requests(), IsEmpty());
    EXPECT_THAT(m_log.messages("ERROR"), ElementsAre("quorl_getConfig(): invalid item given "));
    EXPECT_EQ(1U, m_log.all().size());
}

TEST_F(GetConfig, FailsWhenTheServiceClosesAfter1000Bytes)
{
    m_server.answers(std::string(1000, 'x'));
    CaptureStderr();
    EXPECT_EQ(-1, ask("Bind-Address"));
    EXPECT_EQ("not enough bytes read: 1000 != 1028\n", GetCapturedStderr());
    EXPECT_EQ(std::nullopt, m_text);
    EXPECT_THAT(m_log.messages("DEBUG"), ElementsAre("quorl_getConfig(): rpc call failed "));
    EXPECT_EQ(1U, m_log.all().size());
}

TEST_F(GetConfig, FailsWhenOneByteIsMissing)
{
    m_server.answers(std::string(1027, 'x'));
    CaptureStderr();
    EXPECT_EQ(-1, ask("Bind-Address"));
    EXPECT_EQ("not enough bytes read: 1027 != 1028\n", GetCapturedStderr());
}

TEST_F(GetConfig, FailsWithoutATextWhenThereIsNoMemoryForIt)
{
    m_server.answersConfig("192.168.0.69", 12);
    test::libraryFaults().noMemoryForTexts = true;
    EXPECT_EQ(-1, ask("Bind-Address"));
    EXPECT_EQ(std::nullopt, m_text);
    EXPECT_THAT(m_log.messages("DEBUG"), ElementsAre("quorl_getConfig(): Unable to strdup"));
    EXPECT_EQ(1U, m_log.all().size());
}

TEST_F(GetConfig, SetsTheLogUpForRedisUnderTheProgramsNameAtTheFirstCall)
{
    EXPECT_EQ(-1, ask(nullptr));
    const auto records = m_log.all();
    ASSERT_EQ(1U, records.size());
    EXPECT_EQ(program_invocation_short_name, records[0].source);
}

} // namespace orvo
