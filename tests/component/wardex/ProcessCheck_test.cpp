#include "ServiceInfo.h"

#include "Box.h"
#include "Eventually.h"
#include "LoggedDevice.h"
#include "NamedProcess.h"
#include "ScriptJournal.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

#include <filesystem>
#include <fstream>

namespace orvo
{

namespace
{

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class ProcessCheck : public testing::Test
{
protected:
    bool finds(const char* processName)
    {
        return m_info.isProcessRunning(QString::fromLatin1(processName));
    }

    int m_argc{0};
    QCoreApplication m_application{m_argc, nullptr};
    test::LoggedDevice m_device;
    Logger::RedisLogger m_logger{"wardex", Logger::kLogSocket, Logger::kLogList, true};
    ServiceInfo m_info{&m_logger, false};
};

/// A /bin of the test's own; it offers a shell and what else is put there.
class OwnBin
{
public:
    OwnBin()
    {
        test::requireBox();
        fs::remove("/bin");
        fs::create_directory("/bin");
        fs::create_symlink("/usr/bin/sh", "/bin/sh");
    }
    ~OwnBin()
    {
        fs::remove_all("/bin");
        fs::create_symlink("usr/bin", "/bin");
    }
    OwnBin(const OwnBin&) = delete;
    OwnBin& operator=(const OwnBin&) = delete;
};

/// A device whose process list is a script of the test.
class ProcessList : public ProcessCheck
{
protected:
    void answers(const std::string& script, int exitStatus = 0)
    {
        m_journal.install("/bin/ps", exitStatus, script);
    }

    OwnBin m_bin;
    test::ScriptJournal m_journal;
};

class RealProcessList : public ProcessCheck
{
protected:
    /// 'Z' for a process that has ended and that nobody has reaped.
    static char stateOf(pid_t pid)
    {
        std::string fields;
        std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), fields);
        return fields.at(fields.rfind(')') + 2);
    }
};

} // namespace

TEST_F(RealProcessList, ShowsAProcessFromItsStartToItsEnd)
{
    EXPECT_FALSE(finds("pictor"));
    test::NamedProcess pictor("pictor");
    EXPECT_TRUE(finds("pictor"));
    pictor.process().kill();
    EXPECT_FALSE(finds("pictor"));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(RealProcessList, StillShowsAProcessThatNobodyHasReaped)
{
    test::NamedProcess pictor("pictor");
    pictor.process().signal(SIGKILL);
    ASSERT_TRUE(test::eventually([&] { return stateOf(pictor.process().pid()) == 'Z'; }));
    EXPECT_TRUE(finds("pictor"));
}

TEST_F(RealProcessList, ShowsNoProcessByAPartOfItsName)
{
    const test::NamedProcess process("pictor2");
    ASSERT_TRUE(finds("pictor2"));
    EXPECT_FALSE(finds("pictor"));
    EXPECT_FALSE(finds("ictor2"));
}

TEST_F(ProcessList, IsAskedForWithoutArguments)
{
    answers("note $#");
    (void)finds("pictor");
    EXPECT_THAT(m_journal.calls(), ElementsAre("/bin/ps", "0"));
}

TEST_F(ProcessList, NamesAProcessByAWholeWord)
{
    answers("printf '  PID TTY TIME CMD\\n 7 ? 00:00:00 pictor\\n'");
    EXPECT_TRUE(finds("pictor"));
    EXPECT_TRUE(finds("CMD"));
    EXPECT_FALSE(finds("picto"));
    EXPECT_FALSE(finds("ictor"));
    EXPECT_FALSE(finds("pictor\n"));
    EXPECT_FALSE(finds("? 00:00:00"));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ProcessList, DoesNotNameAProcessThatIsShownByItsFullPath)
{
    answers("echo 7 /usr/bin/pictor");
    EXPECT_FALSE(finds("pictor"));
    EXPECT_TRUE(finds("/usr/bin/pictor"));
}

TEST_F(ProcessList, IsReadWithItsCase)
{
    answers("echo Pictor");
    EXPECT_FALSE(finds("pictor"));
}

TEST_F(ProcessList, IsSplitAtEveryKindOfWhiteSpace)
{
    answers("printf 'one\\ttwo\\r\\nthree\\v\\ffour  five'");
    for (const char* word : {"one", "two", "three", "four", "five"})
    {
        EXPECT_TRUE(finds(word)) << word;
    }
}

TEST_F(ProcessList, TakesTheNameLiterally)
{
    answers("echo pictor");
    EXPECT_FALSE(finds("p.*r"));
    EXPECT_FALSE(finds("\\w+"));
}

TEST_F(ProcessList, IsReadUpToItsFirstZeroByte)
{
    answers("printf 'corvane\\n\\0\\npictor\\n'");
    EXPECT_TRUE(finds("corvane"));
    EXPECT_FALSE(finds("pictor"));
}

TEST_F(ProcessList, IsNotBelievedWhenItFails)
{
    answers("echo pictor; echo no list today >&2", 3);
    EXPECT_FALSE(finds("pictor"));
    EXPECT_THAT(m_device.lines(), ElementsAre("ERROR isProcessRunning: stderr: no list today#"));
}

TEST_F(ProcessList, ReportsItsFailureUpToTheFirstZeroByte)
{
    answers("printf 'seen\\0unseen' >&2", 1);
    EXPECT_FALSE(finds("pictor"));
    EXPECT_THAT(m_device.lines(), ElementsAre("ERROR isProcessRunning: stderr: seen"));
}

TEST_F(ProcessList, IsNotBelievedWhenItCrashes)
{
    answers("echo pictor; kill -SEGV $$");
    EXPECT_FALSE(finds("pictor"));
    EXPECT_THAT(m_device.lines(), ElementsAre("ERROR isProcessRunning: stderr: "));
}

TEST_F(ProcessList, IsReportedWhenItIsMissing)
{
    EXPECT_FALSE(finds("pictor"));
    EXPECT_THAT(m_device.lines(), ElementsAre("ERROR isProcessRunning: stderr: "));
}

TEST_F(ProcessList, MayComplainAndSucceed)
{
    answers("echo pictor; echo beware >&2");
    EXPECT_TRUE(finds("pictor"));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

} // namespace orvo
