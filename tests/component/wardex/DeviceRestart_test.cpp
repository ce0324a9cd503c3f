#include "ServiceAction.h"
#include "ServiceInfo.h"

#include "ChildProcess.h"
#include "Eventually.h"
#include "LoggedDevice.h"
#include "OwnProcess.h"
#include "ScriptJournal.h"
#include "SyslogCapture.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <csignal>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

namespace orvo
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using Message = test::SyslogCapture::Message;

constexpr bool kDeveloperMode = true;
const std::string kProgram = "device_restart_tests";
const std::string kReboot = "SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ...";
const std::string kRebootSaved =
    "SUPERVISOR WOULD RESTART SYSTEM via /dev/watchdog ... but saved via developer mode";
const std::string kPackage =
    "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware";
const std::string kPackageSaved =
    "SUPERVISOR would restart mf-optware, but saved via developer mode";

class DeviceRestart : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
        {
            if (entry.path().filename().string().find("core") != std::string::npos)
            {
                std::filesystem::remove(entry.path());
            }
        }
        m_journal.install("/etc/init.d/mf-optware", 0, "note with $(cd /tmp; echo *core*)");
        m_journal.install("/box/bin/reboot");
    }

    /// The once-only texts live as long as a process, and a reboot ends its use.
    static void act(const std::function<void(ServiceAction&)>& action)
    {
        Logger::RedisLogger logger("wardex", Logger::kLogSocket, Logger::kLogList, true);
        ServiceInfo info(&logger, false);
        ServiceAction serviceAction(&info, &logger);
        action(serviceAction);
    }

    static void inOwnProcess(const std::function<void(ServiceAction&)>& action)
    {
        test::inOwnProcess([&] { act(action); });
    }

    test::LoggedDevice m_device;
    test::ScriptJournal m_journal;
    test::SyslogCapture m_syslog;
};

using PackageRestart = DeviceRestart;

/// A supervisor that was asked to reboot the device.
class Reboot : public DeviceRestart
{
protected:
    void reboot()
    {
        m_pid = fork();
        ASSERT_NE(-1, m_pid);
        if (m_pid == 0)
        {
            act([](ServiceAction& action) { action.restartSystem(!kDeveloperMode); });
            _exit(kReturned);
        }
        ASSERT_TRUE(test::eventually([this] { return !m_journal.calls().empty(); }));
    }

    void TearDown() override
    {
        if (m_pid > 0)
        {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
    }

    /// Each nap of the endless wait is one voluntary switch away from the processor.
    [[nodiscard]] long naps() const
    {
        std::ifstream status("/proc/" + std::to_string(m_pid) + "/status");
        const std::string key = "voluntary_ctxt_switches:";
        for (std::string line; std::getline(status, line);)
        {
            if (line.rfind(key, 0) == 0)
            {
                return std::stol(line.substr(key.size()));
            }
        }
        return -1;
    }

    [[nodiscard]] bool isWaiting() const
    {
        const long before = naps();
        return test::eventually([&] { return naps() >= before + 2; }) &&
               waitpid(m_pid, nullptr, WNOHANG) == 0;
    }

    static constexpr int kReturned = 3;
    pid_t m_pid{-1};
};

void put(const std::string& path)
{
    std::ofstream(path) << "core";
}

} // namespace

TEST_F(PackageRestart, RemovesTheCoreFilesAndThenRestartsThePackage)
{
    for (const char* name : {"core_1234", "core_pictor.7", "core_", "acore_1", "core", "corex"})
    {
        put(std::string("/tmp/") + name);
    }
    inOwnProcess([](ServiceAction& action) { action.restartPackage(!kDeveloperMode); });
    EXPECT_THAT(m_journal.calls(),
                ElementsAre("/etc/init.d/mf-optware restart", "with acore_1 core corex"));
}

TEST_F(PackageRestart, IsToldToTheLogAndToSyslogEachTime)
{
    inOwnProcess(
        [](ServiceAction& action)
        {
            action.restartPackage(!kDeveloperMode);
            action.restartPackage(!kDeveloperMode);
        });
    EXPECT_THAT(m_device.lines(), ElementsAre("FATAL " + kPackage, "FATAL " + kPackage));
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_CRIT, kPackage}, Message{LOG_CRIT, kPackage}));
}

TEST_F(PackageRestart, IsToldBeforeItIsDone)
{
    m_journal.install("/etc/init.d/mf-optware", 0,
                      "note $(redis-cli -s /tmp/redis-cache.sock llen LOG:ENTRIES)");
    inOwnProcess([](ServiceAction& action) { action.restartPackage(!kDeveloperMode); });
    ASSERT_EQ(2U, m_journal.calls().size());
    EXPECT_EQ(std::to_string(test::LogRecords().all().size()), m_journal.calls()[1]);
}

TEST_F(PackageRestart, ReturnsWhenTheScriptFails)
{
    m_journal.install("/etc/init.d/mf-optware", 1);
    inOwnProcess([](ServiceAction& action) { action.restartPackage(!kDeveloperMode); });
    EXPECT_THAT(m_journal.calls(), ElementsAre("/etc/init.d/mf-optware restart"));
}

TEST_F(PackageRestart, ReturnsWhenTheScriptIsMissing)
{
    std::filesystem::remove("/etc/init.d/mf-optware");
    inOwnProcess([](ServiceAction& action) { action.restartPackage(!kDeveloperMode); });
    EXPECT_THAT(m_device.lines(), ElementsAre("FATAL " + kPackage));
}

TEST_F(PackageRestart, HappensAlsoWhenTheCoreFilesCannotBeRemoved)
{
    std::filesystem::create_directory("/tmp/core_folder");
    inOwnProcess([](ServiceAction& action) { action.restartPackage(!kDeveloperMode); });
    EXPECT_THAT(m_journal.calls(),
                ElementsAre("/etc/init.d/mf-optware restart", "with core_folder"));
}

TEST_F(PackageRestart, IsOnlyToldOnceInDeveloperMode)
{
    put("/tmp/core_1");
    inOwnProcess(
        [](ServiceAction& action)
        {
            action.restartPackage(kDeveloperMode);
            action.restartPackage(kDeveloperMode);
        });
    EXPECT_THAT(m_journal.calls(), IsEmpty());
    EXPECT_TRUE(std::filesystem::exists("/tmp/core_1"));
    EXPECT_THAT(m_device.lines(), ElementsAre("FATAL " + kPackageSaved));
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, kPackageSaved}));
}

TEST_F(Reboot, IsToldAndDoneAndNeverReturns)
{
    reboot();
    EXPECT_TRUE(isWaiting());
    EXPECT_THAT(m_journal.calls(), ElementsAre("/box/bin/reboot"));
    EXPECT_THAT(m_device.lines(), ElementsAre("EMERG " + kProgram + ": " + kReboot));
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, kReboot}));
}

TEST_F(Reboot, NeverReturnsAlsoWhenTheCommandFails)
{
    m_journal.install("/box/bin/reboot", 1);
    reboot();
    EXPECT_TRUE(isWaiting());
}

TEST_F(Reboot, IsOnlyToldOnceInDeveloperMode)
{
    inOwnProcess(
        [](ServiceAction& action)
        {
            action.restartSystem(kDeveloperMode);
            action.restartSystem(kDeveloperMode);
        });
    EXPECT_THAT(m_journal.calls(), IsEmpty());
    EXPECT_THAT(m_device.lines(), ElementsAre("EMERG " + kProgram + ": " + kRebootSaved));
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, kRebootSaved}));
}

TEST_F(Reboot, IsToldApartFromThePackageRestartInDeveloperMode)
{
    inOwnProcess(
        [](ServiceAction& action)
        {
            action.restartPackage(kDeveloperMode);
            action.restartSystem(kDeveloperMode);
            action.restartPackage(kDeveloperMode);
        });
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_CRIT, kPackageSaved}, Message{LOG_CRIT, kRebootSaved}));
}

} // namespace orvo
