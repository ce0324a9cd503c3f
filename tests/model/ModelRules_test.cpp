// The model and its judges are right by themselves, and able to find fault.

#include "Exploration.h"
#include "HandWorld.h"
#include "SupervisorModel.h"
#include "UnstablePeriods.h"
#include "World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::model
{

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ModelOfACamera : public testing::Test
{
protected:
    ModelOfACamera() { m_model.powerOn(); }

    void pings(unsigned machine, int count, const PingAnswer& answer)
    {
        for (int i = 0; i < count; ++i)
        {
            m_world.begin({answer});
            m_model.tickService(machine);
        }
    }

    void ticks(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            m_world.begin({});
            m_model.tickSystem();
        }
    }

    [[nodiscard]] ServicePhase phase(unsigned machine) const
    {
        return m_model.state().machines[machine].phase;
    }

    const PingAnswer m_none{false, "down"};
    const PingAnswer m_up{true, "up"};
    HandWorld m_world{false};
    SupervisorModel m_model{{}, &m_world};
};

class WorldOfASeed : public testing::Test
{
protected:
    CountedClock m_clock{0};
};

class StepOfADevice : public testing::Test
{
protected:
    HandWorld m_world{false};
};

/// The first seed of a developer's device, or of one in the field.
std::uint64_t seedOf(bool isDeveloper)
{
    std::uint64_t seed = 1;
    while (Scenario(seed).setting().isDeveloper != isDeveloper)
    {
        ++seed;
    }
    return seed;
}

} // namespace

TEST_F(ModelOfACamera, LeavesStartingOnTheSeventhMiss)
{
    pings(Pictor, 6, m_none);
    EXPECT_EQ(ServicePhase::Starting, phase(Pictor));
    pings(Pictor, 1, m_none);
    EXPECT_EQ(ServicePhase::Down, phase(Pictor));
}

TEST_F(ModelOfACamera, LeavesUpOnTheFourthMiss)
{
    pings(Pictor, 1, m_up);
    pings(Pictor, 3, m_none);
    EXPECT_EQ(ServicePhase::Up, phase(Pictor));
    pings(Pictor, 1, m_none);
    EXPECT_EQ(ServicePhase::Down, phase(Pictor));
}

TEST_F(ModelOfACamera, RestartsThePackageOnTheEleventhUnstableTick)
{
    ticks(6 + 10);
    EXPECT_THAT(m_world.deeds(), ElementsAre("feed"));
    ticks(1);
    EXPECT_THAT(m_world.deeds(), Contains("shell rm -f /tmp/core_*"));
    EXPECT_THAT(m_world.deeds(), Contains("shell /etc/init.d/mf-optware restart"));
    EXPECT_EQ(SystemPhase::Starting, m_model.state().system);
}

TEST_F(ModelOfACamera, RebootsAtTheFourthNeedAndFeedsNoMore)
{
    ticks(3 * 17 + 16);
    EXPECT_FALSE(m_model.state().isRebooting);
    ticks(1);
    EXPECT_TRUE(m_model.state().isRebooting);
    EXPECT_THAT(m_world.deeds(),
                Contains("record EMERG Too many restarts(3) detected in last 5 minutes: rebooting "
                         "whole system ..."));
    EXPECT_THAT(m_world.breaches(), IsEmpty());
}

TEST_F(ModelOfACamera, ForgetsARestartOfJustTheWindowsAge)
{
    m_world.setWallClock(1000);
    ticks(3 * 17 + 16);
    m_world.setWallClock(1000 + 300'000);
    ticks(1);
    EXPECT_FALSE(m_model.state().isRebooting);
}

TEST_F(ModelOfACamera, KeepsItsTicksOverAStablePeriod)
{
    ticks(6 + 4);
    pings(Pictor, 1, m_up);
    pings(Vistor, 1, m_up);
    EXPECT_EQ(SystemPhase::Stable, m_model.state().system);
    pings(Pictor, 4, m_none);
    EXPECT_EQ(SystemPhase::Unstable, m_model.state().system);
    EXPECT_EQ(4U, m_model.state().unstableTicks);
}

TEST_F(ModelOfACamera, IsWatchedForUnstablePeriodsWithoutAnEnd)
{
    UnstablePeriods periods(m_model);
    periods.begin();
    ticks(6);
    periods.afterTick(kSystemTimer);
    for (int i = 0; i < 10; ++i)
    {
        periods.afterTick(kSystemTimer); // ticks that the machine does not take
    }
    EXPECT_THAT(periods.breaches(), IsEmpty());
    periods.afterTick(kSystemTimer);
    EXPECT_THAT(periods.breaches(), ElementsAre("unstable for 11 ticks"));
}

TEST_F(WorldOfASeed, BehavesAlikeForTheSameDeeds)
{
    const Scenario scenario(7);
    CountedClock otherClock(0);
    World world(scenario, &m_clock);
    World other(scenario, &otherClock);
    for (std::int64_t i = 0; i < 1000; ++i)
    {
        (void)world.ping("com.orvo.pictor");
        (void)other.ping("com.orvo.pictor");
        world.moveTo(1000 * i);
        other.moveTo(1000 * i);
    }
    EXPECT_EQ(world.deeds(), other.deeds());
    EXPECT_EQ(world.now(), other.now());
}

TEST_F(WorldOfASeed, FindsAFeedAfterTheRebootCommand)
{
    World world(Scenario(seedOf(false)), &m_clock);
    world.shell("reboot");
    EXPECT_THAT(world.breaches(), IsEmpty());
    world.feed();
    EXPECT_EQ(1U, world.breaches().size());
}

TEST_F(WorldOfASeed, FindsAnActionOnADevelopersDevice)
{
    World world(Scenario(seedOf(true)), &m_clock);
    world.obey(true);
    (void)world.run("/opt/orvo/etc/init.d/30_pictor restart");
    EXPECT_THAT(world.breaches(), IsEmpty());
    world.obey(false);
    (void)world.run("/opt/orvo/etc/init.d/30_pictor restart");
    EXPECT_EQ(1U, world.breaches().size());
}

TEST_F(StepOfADevice, IsOneAction)
{
    (void)m_world.run("/opt/orvo/etc/init.d/30_pictor stop");
    (void)m_world.run("/opt/orvo/etc/init.d/30_pictor restart");
    EXPECT_THAT(m_world.breaches(), IsEmpty());
    m_world.begin({});
    m_world.shell("rm -f /tmp/core_*");
    m_world.shell("/etc/init.d/mf-optware restart");
    EXPECT_THAT(m_world.breaches(), IsEmpty());
    (void)m_world.run("/opt/orvo/etc/init.d/30_pictor stop");
    EXPECT_THAT(m_world.breaches(), ElementsAre("two actions at once: on the package and "
                                                "/opt/orvo/etc/init.d/30_pictor"));
}

TEST_F(StepOfADevice, EndsWithTheRebootCommand)
{
    m_world.shell("reboot");
    EXPECT_THAT(m_world.breaches(), IsEmpty());
    m_world.feed();
    EXPECT_THAT(m_world.breaches(), ElementsAre("a feed after the reboot command"));
}

TEST_F(StepOfADevice, IsNoActionOnADevelopersDevice)
{
    HandWorld world(true);
    (void)world.run("/bin/ps");
    EXPECT_THAT(world.breaches(), IsEmpty());
    world.shell("reboot");
    EXPECT_THAT(world.breaches(), ElementsAre("an action on a developer's device: reboot"));
}

TEST(ExplorationOfADevice, EndsWithoutABreach)
{
    ModelSetting setting;
    setting.services = bitOf(Wirl);
    const Exploration exploration(setting);
    EXPECT_LT(1000U, exploration.edges().size());
    EXPECT_THAT(exploration.breaches(), IsEmpty());
}

} // namespace orvo::model
