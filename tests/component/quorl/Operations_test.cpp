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
    quorl_emit_async_msg(1, -2, std::string(5000, 'm').c_str());
    EXPECT_EQ(word(-2) + std::string(4095, 'm') + '\0' + word(1),
              m_server.requests().at(0).substr(4));
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
    EXPECT_EQ(0, quorl_emit_json_output_format_update(std::string(2000, 'j').c_str(), 2000, 1));
    EXPECT_EQ(std::string(1023, 'j') + '\0' + word(1), m_server.requests().at(0).substr(4));
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
    m_server.answers(std::string(256, 't') + word(256));
    EXPECT_EQ(256, queryText());
    EXPECT_EQ(std::string(256, 't'), m_text);
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
