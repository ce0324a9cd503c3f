// A developer's device: everything is judged, nothing is done.

#include "SupervisedDevice.h"

#include "DevicePaths.h"
#include "FileDescriptor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

#include <fcntl.h>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using testing::ElementsAre;
using testing::IsEmpty;

class DeadServiceOfADeveloper : public testing::Test
{
protected:
    /// A service that never answers, in SuprDown. Its name is new in this process, because the
    /// logger remembers for the whole process what it logged once.
    std::string makeDeadService()
    {
        static int number = 0;
        std::string name = "com.orvo.dead" + std::to_string(++number);
        StubService::Answers& answers = m_answers[name];
        ServiceInfo::addService(QString::fromStdString(name),
                                ServiceInfo::makeService<StubService>(
                                    "pictor", 1000, "/opt/orvo/etc/init.d/30_pictor", &answers));
        m_device.supervise(name);
        answers.answer("down");
        m_device.afterPings(name, 1);
        answers.fail();
        m_device.forgetThePast();
        return name;
    }

    std::map<std::string, StubService::Answers> m_answers;
    SupervisedDevice m_device{Mode::Developer};
};

/// Asked by what is open, not by its name: the box shows the node's as that of a deleted file.
bool isWatchdogOpen()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::any_of(begin(all), end(all),
                       [](const auto& open)
                       {
                           std::error_code gone;
                           return std::filesystem::equivalent(open.path(), kWatchdogNode, gone);
                       });
}

} // namespace

TEST_F(DeadServiceOfADeveloper, IsLeftAloneAndWarnedOfOnTheSecondBadPing)
{
    const std::string name = makeDeadService();
    m_device.afterPings(name, 1);
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
    m_device.afterPings(name, 1);
    EXPECT_EQ("SuprDown", SupervisedDevice::stateOf(name));
    EXPECT_THAT(m_device.newRecords(), ElementsAre("WARN Service " + name +
                                                   " considered dead, restarting .... (disabled)"));
    EXPECT_THAT(m_device.newCommands(), IsEmpty());
}

TEST_F(DeadServiceOfADeveloper, IsWarnedOfOnceAndPingedOn)
{
    const std::string name = makeDeadService();
    m_device.afterPings(name, 2);
    m_device.forgetThePast();
    const int before = m_answers[name].pings;
    m_device.afterPings(name, 20);
    EXPECT_EQ(before + 20, m_answers[name].pings);
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
    EXPECT_THAT(m_device.newCommands(), IsEmpty());
}

TEST_F(DeadServiceOfADeveloper, IsWarnedOfForEachService)
{
    const std::string first = makeDeadService();
    const std::string second = makeDeadService();
    m_device.afterPings(first, 2);
    m_device.afterPings(second, 2);
    EXPECT_THAT(
        m_device.newRecords(),
        ElementsAre("WARN Service " + first + " considered dead, restarting .... (disabled)",
                    "WARN Service " + second + " considered dead, restarting .... (disabled)"));
}

TEST_F(DeadServiceOfADeveloper, ComesBackByItself)
{
    const std::string name = makeDeadService();
    m_device.afterPings(name, 4);
    m_answers[name].answer("up");
    m_device.afterPings(name, 2);
    EXPECT_EQ("SuprUp", SupervisedDevice::stateOf(name));
}

TEST(DeveloperDevice, NeverOpensTheWatchdog)
{
    SupervisedDevice device(Mode::Developer);
    device.bringTo("SuprRebootSystem");
    device.reportUp(kVistor);
    device.reportUp(kPictor);
    device.afterTicks(1);
    EXPECT_FALSE(isWatchdogOpen());

    const FileDescriptor own(::open(kWatchdogNode, O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(isWatchdogOpen()) << "and it would be seen";
}

} // namespace orvo::test
