#include "ChildProcess.h"
#include "Eventually.h"
#include "FileDescriptor.h"
#include "RedisClient.h"
#include "RedisServer.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

namespace orvo::ctl
{

using test::ChildProcess;
using test::eventually;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The beat at which a device writes; what was late is made up for.
class Beat
{
public:
    explicit Beat(std::chrono::milliseconds period)
    {
        const auto nanoseconds = std::chrono::nanoseconds(period).count();
        const timespec time{0, static_cast<long>(nanoseconds)};
        const itimerspec beats{time, time};
        EXPECT_EQ(0, timerfd_settime(m_timer.get(), 0, &beats, nullptr));
    }

    void await()
    {
        std::uint64_t passed = 0;
        while (m_due == 0 && ::read(m_timer.get(), &passed, sizeof passed) == sizeof passed)
        {
            m_due = passed;
        }
        --m_due;
    }

private:
    FileDescriptor m_timer{timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)};
    std::uint64_t m_due{0};
};

class LogVerbs : public testing::Test
{
protected:
    static constexpr char kOutput[] = "/tmp/output";
    static constexpr int kBoundMs = 20000;

    static std::vector<std::string> command(std::vector<std::string> words)
    {
        words.insert(words.begin(), WARDEXCTL);
        return words;
    }

    static std::string output()
    {
        std::ifstream file(kOutput);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    int run(const std::vector<std::string>& words)
    {
        ChildProcess process(command(words), kOutput);
        EXPECT_TRUE(process.waitForEnd(kBoundMs));
        return process.exitStatus();
    }

    /// The messages in the lines, or whole lines of something else.
    static std::vector<std::string> messages()
    {
        std::istringstream text(output());
        std::vector<std::string> found;
        for (std::string line; std::getline(text, line);)
        {
            const std::size_t source = line.find("] ");
            found.push_back(source == std::string::npos ? line : line.substr(source + 2));
        }
        return found;
    }

    void write(const std::string& message, std::uint32_t level = Logger::WARN)
    {
        m_device.write(level, message.c_str(), 0);
    }

    test::RedisServer m_cache{Logger::kLogSocket};
    test::RedisServer m_store{Logger::kConfigSocket};
    test::RedisClient m_client{Logger::kLogSocket};
    Logger::RedisLogger m_device{"wardex", Logger::kLogSocket, Logger::kLogList, false};
};

TEST_F(LogVerbs, ShowsWhatIsStoredOldestFirst)
{
    write("a");
    write("b \"/\"");
    EXPECT_EQ(0, run({"log"}));
    EXPECT_THAT(messages(), ElementsAre("a", "b \"/\""));
    EXPECT_EQ(0, run({"log", "-n", "1"}));
    EXPECT_THAT(messages(), ElementsAre("b \"/\""));
    EXPECT_EQ(0, run({"log", "-n", "0"}));
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(LogVerbs, ShowsCutRecordsAndMarksThem)
{
    write(std::string(480, 'x'));
    EXPECT_EQ(0, run({"log"}));
    EXPECT_THAT(output(), HasSubstr("xxx [cut]\n"));
}

TEST_F(LogVerbs, FiltersByLevelSourceAndExpression)
{
    Logger::RedisLogger other("pictor", Logger::kLogSocket, Logger::kLogList, false);
    write("door");
    write("door 2", Logger::ERROR);
    other.write(Logger::ERROR, "door 3", 0);
    run({"log", "--level", "error"});
    EXPECT_THAT(messages(), ElementsAre("door 2", "door 3"));
    run({"log", "--source", "pictor"});
    EXPECT_THAT(messages(), ElementsAre("door 3"));
    run({"log", "-g", "r [12]$", "--level", "warn"});
    EXPECT_THAT(messages(), ElementsAre("door 2"));
    run({"log", "--source", "') or true or ('"});
    EXPECT_THAT(messages(), IsEmpty());
    run({"log", "--since", "1h"});
    EXPECT_THAT(messages(), ElementsAre("door", "door 2", "door 3"));
}

TEST_F(LogVerbs, LeavesTheLogAsItIs)
{
    write("a");
    run({"log"});
    run({"loglevel"});
    run({"why"});
    run({"timeline"});
    EXPECT_EQ(1, m_device.getLogEntryCount());
}

TEST_F(LogVerbs, FollowsWithoutGapOrDoubleWhileRecordsCome)
{
    constexpr int kRecords = 6000;
    for (int number = 0; number < kRecords / 3; ++number)
    {
        write(std::to_string(number));
    }
    ChildProcess follower(command({"log", "-f"}), kOutput);
    for (int number = kRecords / 3; number < kRecords; ++number)
    {
        write(std::to_string(number));
    }
    ASSERT_TRUE(eventually([&] { return messages().size() >= kRecords; }, kBoundMs));
    const std::vector<std::string> shown = messages();
    ASSERT_EQ(static_cast<std::size_t>(kRecords), shown.size());
    for (int number = 0; number < kRecords; ++number)
    {
        ASSERT_EQ(std::to_string(number), shown[static_cast<std::size_t>(number)]);
    }
    EXPECT_TRUE(follower.isRunning());
}

TEST_F(LogVerbs, FollowsTwoThousandRecordsASecond)
{
    constexpr int kBeats = 800;
    constexpr int kRecordsOfABeat = 10;
    constexpr int kRecords = kBeats * kRecordsOfABeat;
    const ChildProcess follower(command({"log", "-f"}), kOutput);
    Beat beat(std::chrono::milliseconds(5));
    for (int number = 0; number < kRecords; ++number)
    {
        if (number % kRecordsOfABeat == 0)
        {
            beat.await();
        }
        write(std::to_string(number));
    }
    ASSERT_TRUE(eventually([&] { return messages().size() >= kRecords; }, kBoundMs));
    const std::vector<std::string> shown = messages();
    ASSERT_EQ(static_cast<std::size_t>(kRecords), shown.size());
    for (int number = 0; number < kRecords; ++number)
    {
        ASSERT_EQ(std::to_string(number), shown[static_cast<std::size_t>(number)]);
    }
}

TEST_F(LogVerbs, FollowingFiltersWhatComesToo)
{
    write("stored", Logger::ERROR);
    const ChildProcess follower(command({"log", "-f", "--level", "ERROR"}), kOutput);
    ASSERT_TRUE(eventually([&] { return messages().size() == 1; }));
    write("warning");
    write("error", Logger::ERROR);
    ASSERT_TRUE(eventually([&] { return messages().size() == 2; }));
    EXPECT_THAT(messages(), ElementsAre("stored", "error"));
}

TEST_F(LogVerbs, FollowingWaitsForAServerThatGoesAndGoesOn)
{
    const ChildProcess follower(command({"log", "-f"}), kOutput);
    write("a");
    ASSERT_TRUE(eventually([&] { return messages().size() == 1; }));
    m_cache.kill();
    ASSERT_TRUE(eventually([&] { return output().find("Redis went away") != std::string::npos; }));
    m_cache.restart();
    test::RedisClient client(Logger::kLogSocket);
    client.command({"RPUSH", Logger::kLogList,
                    R"({"T":"1.0000", "P":"1", "C":"WARN", "S":"s", "M":"stored anew"})"});
    ASSERT_TRUE(eventually(
        [&]
        {
            client.command({"PUBLISH", Logger::kLogList,
                            R"({"T":"2.0000", "P":"1", "C":"WARN", "S":"s", "M":"live"})"});
            return messages().back() == "live";
        }));
}

TEST_F(LogVerbs, FollowingEndsByInterrupt)
{
    ChildProcess follower(command({"log", "-f"}), kOutput);
    write("a");
    ASSERT_TRUE(eventually([&] { return messages().size() == 1; }));
    follower.signal(SIGINT);
    EXPECT_TRUE(follower.waitForEnd(kBoundMs));
    EXPECT_EQ(128 + SIGINT, follower.exitStatus());
    EXPECT_THAT(messages(), ElementsAre("a"));
}

TEST_F(LogVerbs, TellsThatRedisDoesNotAnswer)
{
    m_cache.stop();
    for (const char* verb : {"log", "why", "loglevel", "timeline"})
    {
        EXPECT_EQ(6, run({verb})) << verb;
        EXPECT_THAT(output(), HasSubstr("wardexctl: /tmp/redis-cache.sock: Redis does not answer "
                                        "(No such file or directory)\n"));
    }
    EXPECT_EQ(6, run({"log", "-f"}));
}

TEST_F(LogVerbs, GivesUpOnARedisThatHangs)
{
    m_cache.suspend();
    EXPECT_EQ(6, run({"log"}));
    m_cache.resume();
}

TEST_F(LogVerbs, WrongWordsAreAStatusOfTheirOwn)
{
    EXPECT_EQ(64, run({"log", "--level", "loud"}));
    EXPECT_EQ(64, run({"log", "-g", "("}));
    EXPECT_EQ(64, run({"log", "--since", "noon"}));
    EXPECT_EQ(64, run({"log", "-n", "-1"}));
    EXPECT_EQ(64, run({"frob"}));
    EXPECT_THAT(output(), HasSubstr("frob"));
    EXPECT_EQ(0, run({"--help"}));
    EXPECT_EQ(0, run({"log", "--help"}));
    EXPECT_THAT(output(), HasSubstr("wardexctl log -f --level WARN"));
}

class LogLevelVerb : public LogVerbs
{
protected:
    /// Whether the device lets INFO through.
    bool logsInfo() { return m_device.log(Logger::INFO, "%s", "info") > 0; }

    /// Waits until the device has told that this is its mask now.
    void awaitAnnounced(const std::string& levels)
    {
        const std::string line = "wardex           " + levels + " (announced)\n";
        EXPECT_TRUE(eventually(
            [&]
            {
                run({"loglevel", "wardex"});
                return output() == line;
            }))
            << output();
    }

    /// The process that will fall back, as the command named it.
    static pid_t fallBackOf(const std::string& said)
    {
        const std::string sign = "at once with: kill ";
        const std::size_t at = said.find(sign);
        EXPECT_NE(std::string::npos, at) << said;
        return at == std::string::npos ? 0 : std::stoi(said.substr(at + sign.size()));
    }

    /// Whether a process has become the command that waits.
    static bool waits(pid_t process)
    {
        std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str().find("--after") != std::string::npos;
    }

    std::string stored()
    {
        return test::RedisClient(Logger::kConfigSocket)
            .command({"HGET", Logger::kConfigHash, "wardex"})
            .text;
    }
};

TEST_F(LogLevelVerb, SetsTheMaskLiveByNames)
{
    EXPECT_FALSE(logsInfo());
    EXPECT_EQ(0, run({"loglevel", "wardex", "+INFO"}));
    EXPECT_EQ("wardex now logs INFO,WARN,ERROR,FATAL,EMERG (heard by 1 process)\n", output());
    EXPECT_TRUE(eventually([&] { return logsInfo(); }));
    run({"loglevel", "wardex"});
    EXPECT_EQ("wardex           INFO,WARN,ERROR,FATAL,EMERG (announced)\n", output());
    EXPECT_EQ("", stored());
}

TEST_F(LogLevelVerb, TakesLevelsOutByAWordWithADash)
{
    EXPECT_EQ(0, run({"loglevel", "wardex", "-WARN"}));
    EXPECT_EQ("wardex now logs ERROR,FATAL,EMERG (heard by 1 process)\n"
              "WARN is hidden now: operators need it.\n",
              output());
    awaitAnnounced("ERROR,FATAL,EMERG");
    EXPECT_EQ(0, run({"loglevel", "wardex", "--", "-error"}));
    awaitAnnounced("FATAL,EMERG");
    EXPECT_EQ(0, run({"loglevel", "wardex", "-FATAL,+INFO", "--save"}));
    EXPECT_EQ("{\n\"source\" : \"wardex\"\n,\"mask\" : 136\n}\n", stored());
    EXPECT_EQ(64, run({"loglevel", "wardex", "-loud"}));
}

TEST_F(LogLevelVerb, ShowsTheDefaultAndWhatIsStored)
{
    run({"loglevel"});
    EXPECT_EQ("wardex           WARN,ERROR,FATAL,EMERG (default)\n", output());
    test::RedisClient(Logger::kConfigSocket)
        .command({"HSET", Logger::kConfigHash, "all", R"({"source":"all","mask":16})"});
    run({"loglevel"});
    EXPECT_EQ("wardex           WARN (stored)\n", output());
}

TEST_F(LogLevelVerb, IgnoresAStoredMaskThatNoLoggerTakes)
{
    for (const char* mask : {"1e300", "-1e300", "4294967296", "-2147483649", "\"255\""})
    {
        test::RedisClient(Logger::kConfigSocket)
            .command({"HSET", Logger::kConfigHash, "wardex",
                      std::string(R"({"source":"wardex","mask":)") + mask + "}"});
        ASSERT_EQ(0, run({"loglevel"}));
        EXPECT_EQ("wardex           WARN,ERROR,FATAL,EMERG (default)\n", output()) << mask;
    }
}

TEST_F(LogLevelVerb, FallsBackByItself)
{
    EXPECT_EQ(0, run({"loglevel", "wardex", "+INFO", "--for", "300ms"}));
    EXPECT_THAT(output(), HasSubstr("falls back in 300ms, or at once with: kill "));
    EXPECT_TRUE(eventually([&] { return logsInfo(); }));
    EXPECT_TRUE(eventually([&] { return !logsInfo(); }));
}

TEST_F(LogLevelVerb, FallsBackToWhatWasBeforeAllThatFallsBack)
{
    EXPECT_EQ(0, run({"loglevel", "wardex", "+INFO", "--for", "60s"}));
    const pid_t first = fallBackOf(output());
    EXPECT_EQ(0, run({"loglevel", "wardex", "all", "--for", "300ms"}));
    awaitAnnounced("WARN,ERROR,FATAL,EMERG");
    EXPECT_TRUE(eventually([&] { return ::kill(first, 0) != 0; }));
}

TEST_F(LogLevelVerb, FallsBackNoMoreAfterALaterWord)
{
    EXPECT_EQ(0, run({"loglevel", "other", "+INFO", "--for", "60s"}));
    const pid_t other = fallBackOf(output());
    EXPECT_EQ(0, run({"loglevel", "wardex", "+INFO", "--for", "60s"}));
    const pid_t own = fallBackOf(output());
    EXPECT_EQ(0, run({"loglevel", "wardex", "ERROR"}));
    EXPECT_TRUE(eventually([&] { return ::kill(own, 0) != 0; }));
    EXPECT_EQ(0, ::kill(other, 0));
    awaitAnnounced("ERROR");
}

TEST_F(LogLevelVerb, FallsBackPastAPersonsOwnDelay)
{
    ChildProcess later(command({"loglevel", "wardex", "all", "--after", "60s"}));
    EXPECT_TRUE(eventually([&] { return waits(later.pid()); }));
    EXPECT_EQ(0, run({"loglevel", "wardex", "+INFO", "--for", "300ms"}));
    awaitAnnounced("WARN,ERROR,FATAL,EMERG");
    EXPECT_FALSE(later.waitForEnd(0));
}

TEST_F(LogLevelVerb, SavesAndKeepsWhatElseIsStored)
{
    test::RedisClient(Logger::kConfigSocket)
        .command({"HSET", Logger::kConfigHash, "wardex",
                  R"({"source":"wardex","max":500,"segvregex":"a\\.\"b"})"});
    EXPECT_EQ(0, run({"loglevel", "wardex", "all", "--save"}));
    EXPECT_EQ("{\n\"source\" : \"wardex\"\n,\"max\" : 500\n,\"mask\" : 255\n,\"segvregex\" : "
              "\"a\\\\.\\\"b\"\n}\n",
              stored());
}

TEST_F(LogLevelVerb, SavesWhatALoggerReadsThoughThePatternIsNoText)
{
    test::RedisClient(Logger::kConfigSocket)
        .command({"HSET", Logger::kConfigHash, "wardex",
                  R"({"source":"wardex","segvregex":"a\ud800b"})"});
    EXPECT_EQ(0, run({"loglevel", "wardex", "ERROR", "--save"}));
    EXPECT_EQ("{\n\"source\" : \"wardex\"\n,\"mask\" : 32\n,\"segvregex\" : \"a?b\"\n}\n",
              stored());
}

TEST_F(LogLevelVerb, WarnsOfAMaskThatHidesWarnings)
{
    run({"loglevel", "wardex", "ERROR"});
    EXPECT_THAT(output(), HasSubstr("WARN is hidden now: operators need it."));
}

TEST_F(LogLevelVerb, RefusesWordsThatDoNotFit)
{
    EXPECT_EQ(64, run({"loglevel", "wardex", "loud"}));
    EXPECT_EQ(64, run({"loglevel", "wardex", "all", "--for", "soon"}));
    EXPECT_EQ(64, run({"loglevel", "wardex", "all", "--for", "1s", "--save"}));
    EXPECT_EQ(64, run({"loglevel", "wardex", "--save"}));
    EXPECT_FALSE(logsInfo());
}

} // namespace orvo::ctl
