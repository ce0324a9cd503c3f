#include "Eventually.h"
#include "LogDevice.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace orvo::Logger
{

namespace
{

const testing::KilledBySignal kSegmentationFault(SIGSEGV);

/// In the process that is about to crash: neither a sanitizer nor a core file.
void expectTheWorst()
{
    std::signal(SIGSEGV, SIG_DFL);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
}

} // namespace

/// A device whose loggers crash on fatal.*disk.
class CrashRule : public LoggerOnDevice
{
protected:
    void SetUp() override { configure(R"({"source":"all","segvregex":"fatal.*disk"})"); }

    const std::string m_line = "Will raise(SIGSEGV): fatal error on disk matches configured "
                               "regex(fatal.*disk)!\n";
};

TEST_F(CrashRule, RaisesAfterTheRecordIsWritten)
{
    EXPECT_EXIT((expectTheWorst(), m_logger.log(WARN, "fatal error on %s", "disk")),
                kSegmentationFault, testing::Eq(m_line));
    EXPECT_TRUE(m_records.expectOnce("WARN", "fatal error on disk"));
}

TEST_F(CrashRule, RaisesOnAOnceOnlyText)
{
    EXPECT_EXIT((expectTheWorst(), m_logger.logOnce(WARN, "fatal error on disk")),
                kSegmentationFault, testing::Eq(m_line));
}

TEST_F(CrashRule, SparesAMaskedCall)
{
    EXPECT_EQ(0, m_logger.log(INFO, "fatal error on disk"));
    EXPECT_EQ(0, m_logger.logOnce(INFO, "fatal error on disk"));
}

TEST_F(CrashRule, RaisesOnAMaskedPreformattedText)
{
    EXPECT_EXIT((expectTheWorst(), m_logger.write(INFO, "fatal error on disk", 0)),
                kSegmentationFault, testing::Eq(m_line));
    EXPECT_THAT(messages(), testing::IsEmpty());
}

TEST_F(CrashRule, SparesAMessageThatIsCoveredInPartOnly)
{
    EXPECT_LT(0, m_logger.log(WARN, "a fatal error on disk now"));
    EXPECT_LT(0, m_logger.log(WARN, "a fatal error on disk"));
    EXPECT_LT(0, m_logger.log(WARN, "fatal error on disk now"));
}

TEST_F(CrashRule, LooksAtTheRawMessage)
{
    configure(R"({"source":"all","segvregex":"a\"b/c\\nd"})");
    EXPECT_LT(0, m_logger.log(WARN, R"(a\"b\/c#d)"));
    EXPECT_EXIT(
        (expectTheWorst(), m_logger.log(WARN, "a\"b/c\nd")), kSegmentationFault,
        testing::Eq("Will raise(SIGSEGV): a\"b/c\nd matches configured regex(a\"b/c\\nd)!\n"));
}

TEST_F(CrashRule, RaisesAlsoWithoutAConnection)
{
    killRedis();
    EXPECT_EQ(-1, m_logger.log(WARN, "first"));
    EXPECT_EXIT((expectTheWorst(), m_logger.log(WARN, "fatal error on disk")), kSegmentationFault,
                testing::Eq("REDIS NOT CONNECTED !n" + m_line));
}

TEST_F(CrashRule, RaisesAlsoWhenTheWriteFails)
{
    killRedis();
    EXPECT_EXIT((expectTheWorst(), m_logger.log(WARN, "fatal error on disk")), kSegmentationFault,
                testing::AllOf(testing::StartsWith("redisPushLog: failed with err: ("),
                               testing::EndsWith(")\n" + m_line)));
}

TEST_F(CrashRule, IsOffWithAnEmptyPattern)
{
    configure(R"({"source":"all","segvregex":""})");
    EXPECT_LT(0, m_logger.log(WARN, "fatal error on disk"));
    EXPECT_EQ(0, m_logger.log(WARN, "%s", ""));
}

TEST_F(CrashRule, ReportsAPatternThatIsNoneOnceAndMatchesNothing)
{
    RedisLogger other("other", kLogSocket, kLogList, false);
    const test::StreamCapture errors(STDERR_FILENO);
    configure(R"({"source":"all","segvregex":"fatal(disk"})");
    EXPECT_LT(0, m_logger.log(WARN, "fatal(disk"));
    EXPECT_LT(0, m_logger.log(WARN, "fatal error on disk"));
    EXPECT_LT(0, other.log(WARN, "fatal error on disk"));
    EXPECT_EQ(0, m_logger.write(INFO, "fatal error on disk", 0));
    const std::string text = errors.text();
    EXPECT_THAT(text, testing::StartsWith("redisPushLog: segvregex(fatal(disk) matches nothing: "));
    EXPECT_EQ(text.size() - 1, text.find('\n'));
}

TEST_F(CrashRule, ReportsTheNextPatternThatIsNone)
{
    const test::StreamCapture errors(STDERR_FILENO);
    configure(R"({"source":"all","segvregex":"("})");
    configure(R"({"source":"all","segvregex":"(","mask":255})");
    const std::string first = errors.text();
    EXPECT_THAT(first, testing::StartsWith("redisPushLog: segvregex(() matches nothing: "));
    EXPECT_EQ(first.size() - 1, first.find('\n'));
    configure(R"({"source":"all","segvregex":"["})");
    EXPECT_THAT(errors.text().substr(first.size()),
                testing::StartsWith("redisPushLog: segvregex([) matches nothing: "));
}

/// No logger yet, and so no thread that would be missing in a process of a test's own.
class CrashRuleOfALiveConfiguration : public LogDevice
{
protected:
    void crashOnTheAnnouncement()
    {
        expectTheWorst();
        const RedisLogger logger("wardex", kLogSocket, kLogList, false);
        test::RedisClient(kLogSocket)
            .publishToListeners(kConfigChannel, R"({"source":"all","segvregex":"Apply.*"})");
        pause();
    }
};

TEST_F(CrashRuleOfALiveConfiguration, AppliesToItsOwnAnnouncement)
{
    EXPECT_EXIT(crashOnTheAnnouncement(), kSegmentationFault,
                testing::StartsWith("Will raise(SIGSEGV): Applying new log configuration: "));
    EXPECT_EQ(1U, announcements().size());
}

} // namespace orvo::Logger
