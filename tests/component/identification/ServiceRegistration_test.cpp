#include "BusJournal.h"
#include "I2cTree.h"
#include "LogRecords.h"
#include "RedisServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace orvo
{

using test::BusJournal;
using test::ChildProcess;
using test::EepromImage;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace
{
constexpr char kCorvane[] = "com.orvo.vistor corvane 2200 /opt/orvo/etc/init.d/40_corvane";
constexpr char kPictor[] = "com.orvo.pictor pictor 1000 /opt/orvo/etc/init.d/30_pictor";
constexpr char kWirl[] = "com.orvo.wirl wirl 1000 /opt/orvo/etc/init.d/10_wirl";
constexpr char kQuorl[] = "com.orvo.quorl quorl 1000 /opt/orvo/etc/init.d/20_quorl";

constexpr char kZk4xxLine[] = "Registerinng services for the ZK4XX family of devices";
constexpr char kZm7xxLine[] = "Registerinng services for the ZM7xx family of devices";
constexpr char kZq9xxLine[] = "Registerinng services for the ZQ9XX family of devices";
constexpr char kNoFamilyLine[] = "Unable to detect the device family";

constexpr char kF[] = "2-0054";
constexpr char kM[] = "2-0053";
} // namespace

/// A device at power-on: log and bus run, the EEPROMs are up to the claim.
class DeviceAtStart : public testing::Test
{
protected:
    /// Registers the services in a process of their own.
    void start(const std::vector<std::string>& words = {})
    {
        std::vector<std::string> command = {REGISTRATION_PROBE};
        command.insert(command.end(), words.begin(), words.end());
        ChildProcess probe(command, kOutput);
        ASSERT_TRUE(probe.waitForEnd(20000));
        ASSERT_EQ(0, probe.exitStatus());
    }

    /// What the process told about this subject, in its order.
    static std::vector<std::string> told(const std::string& subject)
    {
        std::vector<std::string> facts;
        std::ifstream file(kOutput);
        for (std::string line; std::getline(file, line);)
        {
            if (line.rfind(subject + " ", 0) == 0)
            {
                facts.push_back(line.substr(subject.size() + 1));
            }
        }
        return facts;
    }

    static std::vector<std::string> registered() { return told("registered"); }
    static std::vector<std::string> services() { return told("knows"); }
    static std::vector<std::string> watchedNames() { return told("watches"); }

    void expectZk4xx() const
    {
        EXPECT_THAT(registered(), ElementsAre("yes"));
        EXPECT_THAT(m_log.messages(), ElementsAre(kZk4xxLine));
        EXPECT_THAT(services(), UnorderedElementsAre(kCorvane, kPictor, kWirl, kQuorl));
    }

    void expectZm7xx() const
    {
        EXPECT_THAT(registered(), ElementsAre("yes"));
        EXPECT_THAT(m_log.messages(), ElementsAre(kZm7xxLine));
        EXPECT_THAT(services(), ElementsAre(kWirl));
    }

    void expectZq9xx() const
    {
        EXPECT_THAT(registered(), ElementsAre("yes"));
        EXPECT_THAT(m_log.messages(), ElementsAre(kZq9xxLine));
        EXPECT_THAT(services(), UnorderedElementsAre(kCorvane, kPictor));
    }

    void expectNoFamily() const
    {
        EXPECT_THAT(registered(), ElementsAre("no"));
        EXPECT_THAT(m_log.messages(), ElementsAre(kNoFamilyLine));
        EXPECT_THAT(services(), IsEmpty());
    }

    static constexpr char kOutput[] = "/tmp/registration";
    test::RedisServer m_redis{"/tmp/redis-cache.sock"};
    test::LogRecords m_log;
    test::I2cTree m_tree;
};

class TypeOfZk4xx : public DeviceAtStart, public testing::WithParamInterface<const char*>
{
};

TEST_P(TypeOfZk4xx, RegistersAllFourServices)
{
    m_tree.fit(kF, EepromImage('F', GetParam()));
    start();
    expectZk4xx();
}

INSTANTIATE_TEST_SUITE_P(F, TypeOfZk4xx, testing::Values("340", "341", "342", "343", "350", "351"));

class TypeOfZm7xx : public DeviceAtStart, public testing::WithParamInterface<const char*>
{
};

TEST_P(TypeOfZm7xx, RegistersWirlAlone)
{
    m_tree.fit(kF, EepromImage('F', GetParam()));
    start();
    expectZm7xx();
}

INSTANTIATE_TEST_SUITE_P(F, TypeOfZm7xx, testing::Values("200", "201"));

class TypeOfZq9xx : public DeviceAtStart, public testing::WithParamInterface<const char*>
{
};

TEST_P(TypeOfZq9xx, RegistersCorvaneAndPictor)
{
    m_tree.fit(kM, EepromImage('M', GetParam()));
    start();
    expectZq9xx();
}

INSTANTIATE_TEST_SUITE_P(M, TypeOfZq9xx, testing::Values("101", "161", "162"));

TEST_F(DeviceAtStart, IsAZk4xxIfItIsAZq9xxToo)
{
    m_tree.fit(kF, EepromImage('F', "341"));
    m_tree.fit(kM, EepromImage('M', "101"));
    start();
    expectZk4xx();
}

TEST_F(DeviceAtStart, IsAZm7xxIfItIsAZq9xxToo)
{
    m_tree.fit(kF, EepromImage('F', "200"));
    m_tree.fit(kM, EepromImage('M', "101"));
    start();
    expectZm7xx();
}

TEST_F(DeviceAtStart, IsAZq9xxIfItsFRecordIsDamaged)
{
    m_tree.fit(kF, EepromImage('F', "341").damagedAt(127, 0x01));
    m_tree.fit(kM, EepromImage('M', "101"));
    start();
    expectZq9xx();
}

TEST_F(DeviceAtStart, HasNoFamilyWithoutEeproms)
{
    start();
    expectNoFamily();
}

TEST_F(DeviceAtStart, HasNoFamilyIfNoTypeIsKnown)
{
    m_tree.fit(kF, EepromImage('F', "344"));
    m_tree.fit(kM, EepromImage('M', "102"));
    start();
    expectNoFamily();
}

TEST_F(DeviceAtStart, HasNoFamilyIfEveryRecordIsDamaged)
{
    m_tree.fit(kF, EepromImage('F', "341").damagedAt(7, 0x04));
    m_tree.fit(kM, EepromImage('M', "101").damagedAt(0, 0x80));
    start();
    expectNoFamily();
}

TEST_F(DeviceAtStart, TellsItsFamilyAsAWarningOfTheSupervisor)
{
    m_tree.fit(kF, EepromImage('F', "351"));
    start();
    EXPECT_THAT(m_log.all(), ElementsAre(AllOf(Field(&test::LogRecordFields::level, "WARN"),
                                               Field(&test::LogRecordFields::source, "wardex"),
                                               Field(&test::LogRecordFields::isWhole, true))));
}

TEST_F(DeviceAtStart, TellsThatItHasNoFamilyAsAWarning)
{
    start();
    EXPECT_THAT(m_log.messages("WARN"), ElementsAre(kNoFamilyLine));
}

TEST_F(DeviceAtStart, KeepsTheProxiesOfItsServicesOnly)
{
    m_tree.fit(kF, EepromImage('F', "200"));
    start();
    EXPECT_THAT(watchedNames(), ElementsAre("com.orvo.wirl"));
}

TEST_F(DeviceAtStart, KeepsNoProxyWithoutAFamily)
{
    start();
    EXPECT_THAT(told("cannot"), IsEmpty());
    EXPECT_THAT(watchedNames(), IsEmpty());
}

TEST_F(DeviceAtStart, MakesEveryServiceObjectInOrderWhateverItRuns)
{
    const BusJournal journal;
    ASSERT_TRUE(journal.isListening);
    start();
    EXPECT_TRUE(test::eventually([&journal] { return journal.followedNames().size() == 3; }));
    EXPECT_THAT(journal.followedNames(),
                ElementsAre("com.orvo.vistor", "com.orvo.pictor", "com.orvo.wirl"));
}

TEST_F(DeviceAtStart, LeavesAServiceThatIsRegisteredAlreadyInPlace)
{
    m_tree.fit(kF, EepromImage('F', "341"));
    start({"--occupied", "com.orvo.pictor"});
    EXPECT_THAT(registered(), ElementsAre("yes"));
    EXPECT_THAT(services(),
                UnorderedElementsAre(kCorvane, "com.orvo.pictor placeholder 5 /placeholder", kWirl,
                                     kQuorl));
    EXPECT_THAT(watchedNames(), UnorderedElementsAre("com.orvo.vistor", "com.orvo.wirl"));
}

TEST_F(DeviceAtStart, RegistersItsServicesInOrder)
{
    // The table destroys what it does not take at once, so the order of the calls shows on the bus.
    m_tree.fit(kF, EepromImage('F', "341"));
    const BusJournal journal;
    ASSERT_TRUE(journal.isListening);
    start({"--occupied", "com.orvo.vistor", "--occupied", "com.orvo.pictor", "--occupied",
           "com.orvo.wirl"});
    EXPECT_TRUE(test::eventually([&journal] { return journal.abandonedNames().size() == 3; }));
    EXPECT_THAT(journal.abandonedNames(),
                ElementsAre("com.orvo.vistor", "com.orvo.pictor", "com.orvo.wirl"));
}

TEST_F(DeviceAtStart, RegistersNothingTwice)
{
    m_tree.fit(kM, EepromImage('M', "161"));
    start({"--rounds", "2"});
    EXPECT_THAT(registered(), ElementsAre("yes", "yes"));
    EXPECT_THAT(m_log.messages(), ElementsAre(kZq9xxLine, kZq9xxLine));
    EXPECT_THAT(services(), UnorderedElementsAre(kCorvane, kPictor));
    EXPECT_THAT(watchedNames(), UnorderedElementsAre("com.orvo.vistor", "com.orvo.pictor"));
}

} // namespace orvo
