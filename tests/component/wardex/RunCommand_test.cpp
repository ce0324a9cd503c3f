#include "ActingSupervisor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <csignal>
#include <sys/resource.h>

namespace orvo
{

namespace
{

using testing::ElementsAre;

class RunCommand : public test::ActingSupervisor
{
protected:
    bool run(const QString& command) { return m_action.runCommand(command, m_out, m_err); }

    QString script(const std::string& body, int exitStatus = 0)
    {
        m_journal.install("/tmp/script", exitStatus, body);
        return QStringLiteral("/tmp/script");
    }

    QString m_out{QStringLiteral("as before")};
    QString m_err{QStringLiteral("as before")};
};

} // namespace

TEST_F(RunCommand, SucceedsWithExitCodeZero)
{
    EXPECT_TRUE(run(script("echo out; echo err >&2")));
    EXPECT_EQ("out\n", m_out);
    EXPECT_EQ("err\n", m_err);
    EXPECT_THAT(m_device.lines(), testing::IsEmpty());
}

TEST_F(RunCommand, FailsWithAnyOtherExitCode)
{
    for (const int exitStatus : {1, 2, 127, 255})
    {
        EXPECT_FALSE(run(script("echo out", exitStatus))) << exitStatus;
        EXPECT_EQ("out\n", m_out);
    }
}

TEST_F(RunCommand, FailsWhenTheProgramIsMissing)
{
    EXPECT_FALSE(run(QStringLiteral("/opt/orvo/etc/init.d/99_nothing restart")));
    EXPECT_TRUE(m_out.isEmpty());
    EXPECT_TRUE(m_err.isEmpty());
}

TEST_F(RunCommand, FailsWhenTheProgramIsNoProgram)
{
    std::ofstream("/tmp/not-executable") << "#!/bin/sh\nexit 0\n";
    EXPECT_FALSE(run(QStringLiteral("/tmp/not-executable")));
    EXPECT_FALSE(run(QStringLiteral("/tmp")));
}

TEST_F(RunCommand, FailsForAnEmptyCommand)
{
    EXPECT_FALSE(run({}));
    EXPECT_FALSE(run(QStringLiteral("  ")));
}

TEST_F(RunCommand, FailsWhenTheProgramCrashes)
{
    for (const char* signal : {"SEGV", "KILL", "TERM", "HUP"})
    {
        EXPECT_FALSE(run(script(std::string("kill -") + signal + " $$"))) << signal;
    }
}

TEST_F(RunCommand, FailsWhenNoProcessCanBeMade)
{
    const QString command = script("");
    ASSERT_TRUE(run(command)); // also lets a sanitizer see what it cannot look up without files
    rlimit before{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &before));
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
    const bool succeeded = run(command);
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
    EXPECT_FALSE(succeeded);
}

TEST_F(RunCommand, SplitsTheCommandLineWithoutAShell)
{
    m_journal.install("/tmp/script");
    EXPECT_TRUE(run(QStringLiteral("  /tmp/script  one \"two three\"  $HOME * ; exit ")));
    EXPECT_THAT(m_journal.calls(), ElementsAre("/tmp/script one two three $HOME * ; exit"));
}

TEST_F(RunCommand, KeepsQuotedWordsTogether)
{
    EXPECT_TRUE(run(script("for word; do echo \"[$word]\"; done") +
                    QStringLiteral(" one \"two three\" four")));
    EXPECT_EQ("[one]\n[two three]\n[four]\n", m_out);
}

TEST_F(RunCommand, ReadsEachOutputUpToItsFirstZeroByte)
{
    EXPECT_TRUE(run(script("printf 'out\\0more'; printf 'err\\0more' >&2")));
    EXPECT_EQ("out", m_out);
    EXPECT_EQ("err", m_err);
}

TEST_F(RunCommand, TakesAllOfAVeryLongOutput)
{
    EXPECT_TRUE(run(script("head -c 52428800 /dev/zero | tr '\\0' x\n"
                           "head -c 1048576 /dev/zero | tr '\\0' y >&2")));
    EXPECT_EQ(52428800, m_out.size());
    EXPECT_EQ(52428800, m_out.count(QLatin1Char('x')));
    EXPECT_EQ(1048576, m_err.size());
}

TEST_F(RunCommand, DoesNotWaitForWhatTheScriptLeavesInTheBackground)
{
    std::filesystem::remove("/tmp/background");
    EXPECT_TRUE(run(script("sh -c 'echo $$ >/tmp/background; exec sleep 600' &\n"
                           "while ! [ -s /tmp/background ]; do :; done; echo started")));
    EXPECT_EQ("started\n", m_out);
    pid_t background = 0;
    std::ifstream("/tmp/background") >> background;
    EXPECT_EQ(0, kill(background, SIGKILL)) << "it still ran, with the output open";
}

TEST_F(RunCommand, LeavesNoZombieBehind)
{
    EXPECT_TRUE(run(script("echo $$")));
    EXPECT_FALSE(std::filesystem::exists("/proc/" + m_out.trimmed().toStdString()));
}

} // namespace orvo
