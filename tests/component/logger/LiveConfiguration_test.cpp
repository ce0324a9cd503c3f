#include "Eventually.h"
#include "LogDevice.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace orvo::Logger
{

class LiveConfiguration : public LoggerOnDevice
{
protected:
    /// Publishes a text that nobody may take, and then one that is taken: whatever the first did
    /// has happened when the second is announced.
    void expectIgnored(const std::string& text)
    {
        const std::size_t before = announcements().size();
        m_client.publishToListeners(kConfigChannel, text);
        configure(R"({"source":"all"})");
        EXPECT_EQ(before + 1, announcements().size()) << text;
        EXPECT_THAT(announcements().back(),
                    MatchesRegex("Applying new log configuration: mask\\(0xf0\\), SigSegV "
                                 "Regexp\\(\\), max logs\\(10000\\), instance\\(0x[0-9a-f]+\\)"))
            << text;
    }
};

TEST_F(LiveConfiguration, IsAnnouncedWithTheValuesInForce)
{
    configure(R"({"source":"all","mask":255})");
    const auto all = m_records.all();
    ASSERT_EQ(1U, all.size());
    EXPECT_EQ("INFO", all[0].level);
    EXPECT_EQ("wardex", all[0].source);
    EXPECT_THAT(all[0].message,
                MatchesRegex("Applying new log configuration: mask\\(0xff\\), SigSegV "
                             "Regexp\\(\\), max logs\\(10000\\), instance\\(0x[0-9a-f]+\\)"));
}

TEST_F(LiveConfiguration, EnablesLevels)
{
    enableAllLevels();
    EXPECT_EQ(3, m_logger.log(DEBUG, "one"));
    EXPECT_EQ(3, m_logger.log(INFO, "two"));
    EXPECT_THAT(messages(), ElementsAre("one", "two"));
}

TEST_F(LiveConfiguration, TellsWhichLevelsItEnables)
{
    configure(R"({"source":"wardex","mask":20})");
    EXPECT_TRUE(m_logger.isEnabled(TRACE));
    EXPECT_TRUE(m_logger.isEnabled(WARN));
    EXPECT_FALSE(m_logger.isEnabled(INFO));
    configure(R"({"source":"wardex","mask":8})");
    EXPECT_FALSE(m_logger.isEnabled(TRACE));
    EXPECT_FALSE(m_logger.isEnabled(WARN));
    EXPECT_TRUE(m_logger.isEnabled(INFO));
}

TEST_F(LiveConfiguration, IsAnnouncedWhateverTheNewMask)
{
    configure(R"({"source":"wardex","mask":0})");
    EXPECT_EQ(0, m_logger.log(EMERG, "unheard"));
    EXPECT_EQ(1U, announcements().size());
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(LiveConfiguration, KeepsTheValuesThatItDoesNotGive)
{
    configure(R"({"source":"all","mask":8})");
    configure(R"({"source":"all","segvregex":"a.*b"})");
    configure(R"({"source":"all","max":500})");
    EXPECT_THAT(announcements().back(),
                testing::StartsWith("Applying new log configuration: mask(0x8), SigSegV "
                                    "Regexp(a.*b), max logs(500), instance(0x"));
}

TEST_F(LiveConfiguration, IsAnnouncedByEachLoggerOfTheProcess)
{
    RedisLogger other("other", kLogSocket, kLogList, false);
    m_client.publishToListeners(kConfigChannel, R"({"source":"all","mask":255})");
    ASSERT_TRUE(test::eventually([this] { return announcements().size() == 2; }));
    EXPECT_NE(announcements()[0], announcements()[1]) << "each tells its own instance";
    EXPECT_EQ(3, m_logger.log(DEBUG, "one"));
    EXPECT_EQ(3, other.log(DEBUG, "two"));
}

TEST_F(LiveConfiguration, ReachesOnlyTheProgramItNames)
{
    RedisLogger other("other", kLogSocket, kLogList, false);
    configure(R"({"source":"other","mask":255})");
    EXPECT_EQ(0, m_logger.log(DEBUG, "one"));
    EXPECT_EQ(3, other.log(DEBUG, "two"));
    EXPECT_EQ(1U, announcements().size());
}

TEST_F(LiveConfiguration, ReachesTheProcessItNames)
{
    configure(R"({"source":"all","mask":255,"pid":)" + std::to_string(getpid()) + "}");
    EXPECT_EQ(3, m_logger.log(DEBUG, "one"));
}

TEST_F(LiveConfiguration, IsIgnoredWhenItIsForAnotherProcess)
{
    expectIgnored(R"({"source":"all","pid":1000000,"mask":255})");
}

TEST_F(LiveConfiguration, IsIgnoredWithoutASource)
{
    expectIgnored(R"({"mask":255})");
}

TEST_F(LiveConfiguration, IsIgnoredForAnotherProgram)
{
    expectIgnored(R"({"source":"other","mask":255})");
}

TEST_F(LiveConfiguration, IsIgnoredWhenItIsNoObject)
{
    const test::StreamCapture output(STDOUT_FILENO);
    expectIgnored(R"([{"source":"all","mask":255}])");
    EXPECT_EQ("", output.text());
}

TEST_F(LiveConfiguration, IsToldOnStandardOutputWhenItIsNotJson)
{
    const test::StreamCapture output(STDOUT_FILENO);
    const test::StreamCapture errors(STDERR_FILENO);
    expectIgnored("oops{%s");
    EXPECT_EQ("Received no valid JSON config?! (oops{%s)\n", output.text());
    EXPECT_EQ("", errors.text());
}

TEST_F(LiveConfiguration, IsToldByEachLoggerWhenItIsNotJson)
{
    const RedisLogger other("other", kLogSocket, kLogList, false);
    const test::StreamCapture output(STDOUT_FILENO);
    m_client.publishToListeners(kConfigChannel, "");
    configure(R"({"source":"all"})");
    EXPECT_EQ("Received no valid JSON config?! ()\nReceived no valid JSON config?! ()\n",
              output.text());
}

TEST_F(LiveConfiguration, IsAnnouncedIn127Characters)
{
    configure(R"({"source":"all","segvregex":")" + std::string(500, 'x') + "\"}");
    EXPECT_EQ("Applying new log configuration: mask(0xf0), SigSegV Regexp(" + std::string(68, 'x'),
              announcements()[0]);
    EXPECT_EQ(127U, announcements()[0].size());
}

TEST_F(LiveConfiguration, SurvivesAListLengthThatRedisRefuses)
{
    configure(R"({"source":"all","max":-5})");
    EXPECT_EQ(3, m_logger.log(WARN, "one"));
    configure(R"({"source":"all","max":0})");
    EXPECT_EQ(3, m_logger.log(WARN, "two"));
    EXPECT_THAT(messages(), ElementsAre("one", "two"));
}

} // namespace orvo::Logger
