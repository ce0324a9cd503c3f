#include "quorl/Quorl.h"

#include "Frame.h"
#include "QuorlFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>

namespace orvo
{

namespace
{

using test::filled;
using test::frame;
using test::word;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

} // namespace

/// The operations beside quorl_getConfig.
class QuorlOperations : public test::QuorlFixture
{
protected:
    std::int32_t queryText()
    {
        char untouched = 0;
        char* text = &untouched;
        const std::int32_t result = quorl_queryText(&text);
        m_text.reset();
        if (text != &untouched)
        {
            const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
            m_text = owned.get();
        }
        return result;
    }

    std::optional<std::string> m_text;
};

TEST_F(QuorlOperations, EmitDataReadySendsTwelveBytesOfTheNameAndBothValues)
{
    m_server.answers(word(23));
    EXPECT_EQ(23, quorl_emit_data_ready("frame-buffer-17", 15, 0x0102, 0xfffe));
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("data-ready")));
}

TEST_F(QuorlOperations, EmitDataReadySendsNoMoreOfTheNameThanTheLengthGiven)
{
    m_server.answers(word(0));
    EXPECT_EQ(0, quorl_emit_data_ready("io-port", 2, 1, 2));
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("data-ready-short")));
}

TEST_F(QuorlOperations, EmitDataReadySendsANameOfTwelveBytesWholeAndNoneOfThirteen)
{
    m_server.answers(word(0));
    EXPECT_EQ(0, quorl_emit_data_ready("frame-buffer", 12, 1, 2));
    EXPECT_EQ(0, quorl_emit_data_ready("frame-buffers", 13, 1, 2));
    const auto requests = m_server.requests();
    EXPECT_EQ("frame-buffer", requests.at(0).substr(4, 12));
    EXPECT_EQ(requests.at(0), requests.at(1));
}

TEST_F(QuorlOperations, EmitDataReadyRefusesAMissingNameWithoutAWord)
{
    EXPECT_EQ(-1, quorl_emit_data_ready(nullptr, 3, 1, 2));
    EXPECT_EQ(-1, quorl_emit_data_ready("name", 0, 1, 2));
    EXPECT_THAT(m_server.requests(), IsEmpty());
    EXPECT_THAT(m_log.messages(), IsEmpty());
}

TEST_F(QuorlOperations, EmitDataReadyLogsAFailedCallAtDebug)
{
    m_server.answers("123");
    CaptureStderr();
    EXPECT_EQ(-1, quorl_emit_data_ready("name", 4, 1, 2));
    EXPECT_EQ("not enough bytes read: 3 != 4\n", GetCapturedStderr());
    EXPECT_THAT(m_log.messages("DEBUG"), ElementsAre("quorl_emit_data_ready(): rpc call failed "));
    EXPECT_EQ(1U, m_log.all().size());
}

TEST_F(QuorlOperations, EmitAsyncMsgSendsTheSecondValueFirst)
{
    m_server.answers(word(-1));
    quorl_emit_async_msg(1, -2, "hello");
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("async-msg")));
    EXPECT_THAT(m_log.messages(), IsEmpty());
}

TEST_F(QuorlOperations, EmitAsyncMsgSendsAnEmptyTextForAMissingOne)
{
    m_server.answers(word(0));
    quorl_emit_async_msg(1, -2, nullptr);
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("async-msg-empty")));
}

TEST_F(QuorlOperations, EmitAsyncMsgCutsTheTextTo4095Characters)
{
    m_server.answers(word(0));
    for (const std::size_t length : {4095U, 4096U, 5000U})
    {
        quorl_emit_async_msg(1, -2, std::string(length, 'm').c_str());
        EXPECT_EQ(word(-2) + std::string(4095, 'm') + '\0' + word(1),
                  m_server.requests().back().substr(4))
            << length;
    }
}

TEST_F(QuorlOperations, EmitAsyncMsgLogsAFailedCallAtWarn)
{
    m_server.answers("");
    CaptureStderr();
    quorl_emit_async_msg(1, 2, "hello");
    EXPECT_EQ("not enough bytes read: 0 != 4\n", GetCapturedStderr());
    EXPECT_THAT(m_log.messages("WARN"), ElementsAre("quorl_emit_async_msg(): rpc call failed "));
    EXPECT_EQ(1U, m_log.all().size());
}

TEST_F(QuorlOperations, EmitJsonOutputFormatUpdateSendsTextAndValue)
{
    m_server.answers(word(4711));
    EXPECT_EQ(4711, quorl_emit_json_output_format_update(R"({"a":1})", 7, -5));
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("json-update")));
}

TEST_F(QuorlOperations, EmitJsonOutputFormatUpdateSendsNoMoreThanTheLengthGiven)
{
    m_server.answers(word(0));
    EXPECT_EQ(0, quorl_emit_json_output_format_update(R"({"a":1}, and more)", 7, -5));
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("json-update")));
}

TEST_F(QuorlOperations, EmitJsonOutputFormatUpdateStopsAtATerminatorBeforeTheLengthGiven)
{
    m_server.answers(word(0));
    EXPECT_EQ(0, quorl_emit_json_output_format_update(R"({"a":1})", 900, -5));
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("json-update")));
}

TEST_F(QuorlOperations, EmitJsonOutputFormatUpdateCutsTheTextTo1023Characters)
{
    m_server.answers(word(0));
    for (const std::size_t length : {1023U, 1024U, 2000U})
    {
        const std::string text(length, 'j');
        EXPECT_EQ(0, quorl_emit_json_output_format_update(text.c_str(), length, 1));
        EXPECT_EQ(std::string(1023, 'j') + '\0' + word(1), m_server.requests().back().substr(4))
            << length;
    }
}

TEST_F(QuorlOperations, EmitJsonOutputFormatUpdateRefusesAMissingTextWithoutAWord)
{
    EXPECT_EQ(-1, quorl_emit_json_output_format_update(nullptr, 3, 1));
    EXPECT_EQ(-1, quorl_emit_json_output_format_update("{}", 0, 1));
    EXPECT_THAT(m_server.requests(), IsEmpty());
    EXPECT_THAT(m_log.messages(), IsEmpty());
}

TEST_F(QuorlOperations, EmitJsonOutputFormatUpdateLogsAFailedCallAtDebug)
{
    m_server.answers("");
    CaptureStderr();
    EXPECT_EQ(-1, quorl_emit_json_output_format_update("{}", 2, 1));
    EXPECT_EQ("not enough bytes read: 0 != 4\n", GetCapturedStderr());
    EXPECT_THAT(m_log.messages("DEBUG"),
                ElementsAre("quorl_emit_json_output_format_update(): rpc call failed "));
    EXPECT_EQ(1U, m_log.all().size());
}

TEST_F(QuorlOperations, QueryTextReturnsTheTextWithTheResultWord)
{
    m_server.answers(filled("idle", 256) + word(4));
    EXPECT_EQ(4, queryText());
    EXPECT_EQ("idle", m_text);
    EXPECT_THAT(m_server.requests(), ElementsAre(frame("query-text")));
}

TEST_F(QuorlOperations, QueryTextReturnsATextThatFillsItsFieldToTheLastByte)
{
    for (const std::size_t length : {255U, 256U})
    {
        const std::string text(length, 't');
        m_server.answers(filled(text, 256) + word(static_cast<std::int32_t>(length)));
        EXPECT_EQ(static_cast<std::int32_t>(length), queryText());
        EXPECT_EQ(text, m_text);
    }
}

TEST_F(QuorlOperations, QueryTextLeavesTheOutArgumentUntouchedWhenTheResultWordIsZero)
{
    m_server.answers(filled("nobody sees this", 256) + word(0));
    EXPECT_EQ(0, queryText());
    EXPECT_EQ(std::nullopt, m_text);
}

TEST_F(QuorlOperations, QueryTextTellsAFailedCallOnStandardErrorOnly)
{
    m_server.answers("");
    CaptureStderr();
    EXPECT_EQ(0, queryText());
    EXPECT_EQ("not enough bytes read: 0 != 260\nrpc call failed!\n", GetCapturedStderr());
    EXPECT_EQ(std::nullopt, m_text);
    EXPECT_THAT(m_log.messages(), IsEmpty());
}

TEST_F(QuorlOperations, QueryTextTellsThatThereIsNoMemoryForTheText)
{
    m_server.answers(filled("idle", 256) + word(4));
    test::libraryFaults().noMemoryForTexts = true;
    CaptureStderr();
    EXPECT_EQ(0, queryText());
    EXPECT_EQ("strdup: Cannot allocate memory\n", GetCapturedStderr());
    EXPECT_EQ(std::nullopt, m_text);
}

} // namespace orvo
