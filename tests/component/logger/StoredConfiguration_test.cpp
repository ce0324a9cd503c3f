#include "LogDevice.h"
#include "ScriptedRedis.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace orvo::Logger
{

class StoredConfiguration : public LogDevice
{
protected:
    void store(const std::string& field, const std::string& text)
    {
        m_storeClient.command({"HSET", kConfigHash, field, text});
    }
    [[nodiscard]] std::string stored(const std::string& field)
    {
        return m_storeClient.command({"HGET", kConfigHash, field}).text;
    }
    /// The values of the only logger, as it announces them, behind "mask(".
    [[nodiscard]] std::string valuesOfTheLogger()
    {
        configure(R"({"source":"all"})");
        const std::string text = announcements().back();
        const std::size_t start = text.find("mask(");
        return text.substr(start, text.find(", instance") - start);
    }

    test::RedisServer m_store{kConfigSocket};
    test::RedisClient m_storeClient{kConfigSocket};
};

TEST_F(StoredConfiguration, LeavesTheDefaultsWhenThereIsNone)
{
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
}

TEST_F(StoredConfiguration, AddsTheProgramsOwnToTheCommonOne)
{
    store("all", R"({"source":"all","mask":8})");
    store("wardex", R"({"source":"wardex","max":500})");
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ("mask(0x8), SigSegV Regexp(), max logs(500)", valuesOfTheLogger());
}

TEST_F(StoredConfiguration, OverridesTheCommonOneByTheProgramsOwn)
{
    store("all", R"({"source":"all","mask":255,"max":9,"segvregex":"x"})");
    store("wardex", R"({"source":"wardex","mask":240,"segvregex":"y"})");
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(y), max logs(9)", valuesOfTheLogger());
}

TEST_F(StoredConfiguration, IsNotAnnounced)
{
    store("all", R"({"source":"all","mask":255})");
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ(3, logger.log(DEBUG, "one"));
    EXPECT_THAT(m_records.messages(), ElementsAre("one"));
}

TEST_F(StoredConfiguration, IsNotLoadedWithoutTheFlag)
{
    store("all", R"({"source":"all","mask":255})");
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    EXPECT_EQ(0, logger.log(DEBUG, "one"));
}

TEST_F(StoredConfiguration, OfAnotherProgramIsNotTaken)
{
    store("other", R"({"source":"other","mask":255})");
    store("wardex", R"({"source":"other","mask":255})");
    store("all", R"({"source":"wardex","mask":8})");
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ("mask(0x8), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
}

TEST_F(StoredConfiguration, IsToldOnStandardOutputWhenItIsNotJson)
{
    store("all", "oops{");
    store("wardex", "");
    const test::StreamCapture output(STDOUT_FILENO);
    const RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ("Received no valid JSON config?! (oops{)\nReceived no valid JSON config?! ()\n",
              output.text());
}

TEST_F(StoredConfiguration, IsNotTakenWhenItIsNoText)
{
    m_storeClient.command({"SET", kConfigHash, "no hash"});
    const test::StreamCapture errors(STDERR_FILENO);
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ("", errors.text());
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
}

TEST_F(StoredConfiguration, ThatCannotBeAskedForIsToldWithTheOtherSocketsName)
{
    m_store.kill();
    const test::StreamCapture errors(STDERR_FILENO);
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    const std::string line =
        "loadConfig: Redis connection problem for connecting via /tmp/redis-cache.sock\n";
    EXPECT_EQ(line + line, errors.text());
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
}

TEST_F(StoredConfiguration, OfAServerThatStandsStillIsGivenUp)
{
    m_store.suspend();
    const test::StreamCapture errors(STDERR_FILENO);
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    const std::string line =
        "loadConfig: Redis connection problem for connecting via /tmp/redis-cache.sock\n";
    EXPECT_EQ(line + line, errors.text());
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
    m_store.resume();
}

TEST_F(StoredConfiguration, IsAskedForUnderAllAndThenUnderTheProgramsName)
{
    m_store.stop();
    const test::ScriptedRedis server(kConfigSocket,
                                     [](const std::vector<std::string>&) {
                                         return test::ScriptedAnswer{"", true};
                                     });
    RedisLogger logger("wardex", kLogSocket, kLogList, true);
    EXPECT_THAT(server.commands(),
                ElementsAre("HGET LOG:PERM:CFG all", "HGET LOG:PERM:CFG wardex"));
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
}

class SavedConfiguration : public StoredConfiguration
{
protected:
    RedisLogger m_logger{"wardex", kLogSocket, kLogList, false};
};

TEST_F(SavedConfiguration, IsStoredForTheNextStartOfTheProgram)
{
    // The server answers with a number, so the values are not taken at once.
    EXPECT_EQ(0, m_logger.saveConfig("wardex", 255, 500, "x.*y"));
    EXPECT_EQ("{\n\"source\" : \"wardex\"\n,\"max\" : 500\n,\"mask\" : 255\n"
              ",\"segvregex\" : \"x.*y\"\n}\n",
              stored("wardex"));
    EXPECT_EQ(0, m_logger.log(DEBUG, "unheard"));
    RedisLogger next("wardex", kLogSocket, kLogList, true);
    EXPECT_EQ(3, next.log(DEBUG, "one"));
}

TEST_F(SavedConfiguration, IsNotPublished)
{
    (void)m_logger.saveConfig("all", 255, -1, "");
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
    EXPECT_EQ(1U, announcements().size());
}

TEST_F(SavedConfiguration, HoldsEachValueThatIsGiven)
{
    (void)m_logger.saveConfig("a", 0, 0, "");
    EXPECT_EQ("{\n\"source\" : \"a\"\n,\"mask\" : 0\n}\n", stored("a"));
    (void)m_logger.saveConfig("b", -1, 1, "");
    EXPECT_EQ("{\n\"source\" : \"b\"\n,\"max\" : 1\n}\n", stored("b"));
    (void)m_logger.saveConfig("c", -1, 0, "x");
    EXPECT_EQ("{\n\"source\" : \"c\"\n,\"segvregex\" : \"x\"\n}\n", stored("c"));
    EXPECT_THAT(m_records.raw(), IsEmpty());
}

TEST_F(SavedConfiguration, IsNoneWithoutAnyValue)
{
    EXPECT_EQ(0, m_logger.saveConfig("wardex", -1, 0, ""));
    EXPECT_THAT(m_records.messages("WARN"),
                ElementsAre("saveConfig: No log configuration to save ?"));
    EXPECT_EQ(0, m_storeClient.command({"EXISTS", kConfigHash}).number);
}

TEST_F(SavedConfiguration, IsNoneWithoutASource)
{
    EXPECT_EQ(0, m_logger.saveConfig("", 255, 500, "x"));
    EXPECT_THAT(m_records.messages("WARN"),
                ElementsAre("saveConfig: No log configuration to save ?"));
    EXPECT_EQ(0, m_storeClient.command({"EXISTS", kConfigHash}).number);
}

TEST_F(SavedConfiguration, ThatCannotBeStoredIsToldOnStandardError)
{
    m_store.kill();
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_EQ(0, m_logger.saveConfig("wardex", -1, 0, ""));
    EXPECT_EQ("saveConfig: Redis connection problem for connecting via /tmp/redis.sock\n",
              errors.text());
    EXPECT_THAT(m_records.raw(), IsEmpty()) << "the connection comes first";
}

TEST_F(SavedConfiguration, IsTakenWhenTheServerAnswersWithIt)
{
    m_store.stop();
    const std::string text = R"({"source":"wardex","mask":255})";
    const test::ScriptedRedis server(
        kConfigSocket,
        [&](const std::vector<std::string>&)
        {
            return test::ScriptedAnswer{"$" + std::to_string(text.size()) + "\r\n" + text + "\r\n",
                                        false};
        });
    EXPECT_EQ(1, m_logger.saveConfig("wardex", 255, -1, ""));
    EXPECT_EQ(3, m_logger.log(DEBUG, "one"));
    EXPECT_THAT(m_records.messages(), ElementsAre("one")) << "not announced";
    EXPECT_THAT(server.commands(),
                ElementsAre("HSET LOG:PERM:CFG wardex {\n\"source\" : \"wardex\"\n,\"mask\" : "
                            "255\n}\n"));
}

TEST_F(SavedConfiguration, IsNotTakenWhenTheServerRefusesIt)
{
    m_storeClient.command({"SET", kConfigHash, "no hash"});
    const test::StreamCapture output(STDOUT_FILENO);
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_EQ(0, m_logger.saveConfig("wardex", 255, -1, ""));
    EXPECT_EQ("", output.text());
    EXPECT_EQ("", errors.text());
    EXPECT_EQ("mask(0xf0), SigSegV Regexp(), max logs(10000)", valuesOfTheLogger());
}

TEST_F(SavedConfiguration, IsNotTakenWhenTheServerHangsUp)
{
    m_store.stop();
    const test::ScriptedRedis server(kConfigSocket,
                                     [](const std::vector<std::string>&) {
                                         return test::ScriptedAnswer{"", true};
                                     });
    EXPECT_EQ(0, m_logger.saveConfig("wardex", 255, -1, ""));
}

} // namespace orvo::Logger
