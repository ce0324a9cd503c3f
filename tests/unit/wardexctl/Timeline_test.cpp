#include "model/Timeline.h"

#include "RecordStory.h"
#include "dbus-proxy/BusNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

namespace orvo::ctl
{

using test::RecordStory;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
constexpr char kPictorDead[] = "Service com.orvo.pictor considered dead, restarting";
constexpr char kTooMany[] =
    "Too many restarts(3) detected in last 5 minutes: rebooting whole system ...";
constexpr char kMaskWithoutTrace[] = "Applying new log configuration: mask(0xf0), maxEntries(1)";

/// "stable 10-23", with the reason of what is unknown behind it.
std::vector<std::string> spansOf(const Timeline& timeline, const std::string& name = "")
{
    std::vector<std::string> spans;
    for (const TimelineLane& lane : timeline.lanes)
    {
        for (const TimelineSpan& span : lane.spans)
        {
            char text[160];
            std::snprintf(text, sizeof text, "%s %g-%g%s%s",
                          healthText(span.health, name.empty()).c_str(), span.begin, span.end,
                          span.why.empty() ? "" : ": ", span.why.c_str());
            if (lane.name == name)
            {
                spans.emplace_back(text);
            }
        }
    }
    return spans;
}

/// "25 pictor was restarted by its script"
std::vector<std::string> actionsOf(const Timeline& timeline)
{
    std::vector<std::string> actions;
    for (const TimelineAction& action : timeline.actions)
    {
        char time[32];
        std::snprintf(time, sizeof time, "%g ", action.time);
        actions.push_back(time + actionText(action));
    }
    return actions;
}
} // namespace

class TimelineTest : public testing::Test
{
protected:
    Timeline timeline() const { return timelineOf(m_story.records(), m_window); }

    RecordStory m_story;
    TimelineWindow m_window{std::nullopt, 60, true, false};
};

TEST_F(TimelineTest, EmptyLogIsUnknownForAMinute)
{
    const Timeline empty = timeline();
    EXPECT_THAT(spansOf(empty), ElementsAre("unknown 0-60: the log begins later"));
    EXPECT_THAT(spansOf(empty, kPictorBusName), ElementsAre("unknown 0-60: the log begins later"));
    EXPECT_THAT(empty.actions, IsEmpty());
    EXPECT_FALSE(empty.isTraceSeen);
}

TEST_F(TimelineTest, FollowsDeviceAndServicesToThePresent)
{
    m_story.becomesStable().losesPictor();
    const Timeline shown = timeline();
    EXPECT_EQ(8, shown.begin);
    EXPECT_EQ(60, shown.end);
    EXPECT_THAT(spansOf(shown), ElementsAre("starting 8-10", "stable 10-23", "unstable 23-60"));
    EXPECT_THAT(spansOf(shown, kVistorBusName), ElementsAre("starting 8-10", "up 10-60"));
    EXPECT_THAT(spansOf(shown, kPictorBusName),
                ElementsAre("starting 8-10", "up 10-23", "down 23-60"));
    EXPECT_THAT(actionsOf(shown), ElementsAre("8 the supervisor started"));
    EXPECT_TRUE(shown.isTraceSeen);
}

TEST_F(TimelineTest, DeviceComesFirstThenTheJudgedServices)
{
    m_story.becomesStable();
    std::vector<std::string> names;
    for (const TimelineLane& lane : timeline().lanes)
    {
        names.push_back(lane.name);
    }
    EXPECT_THAT(names, ElementsAre("", kVistorBusName, kPictorBusName));
}

TEST_F(TimelineTest, BeginsWhereItIsToldToAndKeepsTheStateOfThatTime)
{
    m_story.becomesStable().losesPictor();
    m_window.since = 15;
    EXPECT_THAT(spansOf(timeline()), ElementsAre("stable 15-23", "unstable 23-60"));
    EXPECT_THAT(timeline().actions, IsEmpty());
}

TEST_F(TimelineTest, TimeBeforeTheLogIsUnknown)
{
    m_story.becomesStable();
    m_window.since = 2;
    EXPECT_THAT(spansOf(timeline()),
                ElementsAre("unknown 2-8: the log begins later", "starting 8-10", "stable 10-60"));
}

TEST_F(TimelineTest, WindowHasASecondAtLeast)
{
    m_story.becomesStable();
    m_window.since = 59.5;
    EXPECT_THAT(spansOf(timeline()), ElementsAre("stable 59-60"));
}

TEST_F(TimelineTest, MaskedStatesAreUnknownFromThenOn)
{
    m_story.becomesStable().says(30, "WARN", kMaskWithoutTrace);
    m_story.says(40, "WARN", "Applying new log configuration: mask(0xff), maxEntries(1)");
    m_story.traces(50, "SuprStableSystem::exit").traces(50, "SuprUnstableSystem::entry");
    const Timeline shown = timeline();
    EXPECT_THAT(spansOf(shown),
                ElementsAre("starting 8-10", "stable 10-30", "unknown 30-40: TRACE was masked",
                            "unknown 40-50: no record told yet", "unstable 50-60"));
    EXPECT_THAT(spansOf(shown, kPictorBusName),
                ElementsAre("starting 8-10", "up 10-30", "unknown 30-40: TRACE was masked",
                            "unknown 40-60: no record told yet"));
}

TEST_F(TimelineTest, DefaultMaskTellsActionsOnly)
{
    m_story.starts(10).says(30, "WARN", kPictorDead).restartsPackage(40);
    const Timeline shown = timeline();
    EXPECT_THAT(spansOf(shown), ElementsAre("unknown 10-60: TRACE was masked"));
    EXPECT_THAT(actionsOf(shown), ElementsAre("10 the supervisor started",
                                              "30 pictor was restarted by its script, "
                                              "10 s",
                                              "40 the whole software package was restarted"));
    EXPECT_FALSE(shown.isTraceSeen);
}

TEST_F(TimelineTest, BetweenTwoSupervisorsNothingIsKnown)
{
    m_story.becomesStable().process(8).starts(30).traces(31, "SuprStartingSystem::entry");
    EXPECT_THAT(spansOf(timeline()),
                ElementsAre("starting 8-10",
                            "unknown 10-30: the supervisor was replaced; 'stable' was told last",
                            "unknown 30-31: TRACE was masked", "starting 31-60"));
    EXPECT_THAT(actionsOf(timeline()),
                ElementsAre("8 the supervisor started", "30 the supervisor started"));
}

TEST_F(TimelineTest, SilentSupervisorMakesTheTimeSinceItsLastRecordUnknown)
{
    m_story.becomesStable().losesPictor();
    m_window.isAnswering = false;
    EXPECT_THAT(spansOf(timeline(), kVistorBusName),
                ElementsAre("starting 8-10", "up 10-23",
                            "unknown 23-60: the supervisor does not answer; 'up' was told last"));
}

TEST_F(TimelineTest, RebootingStaysKnownThoughTheSupervisorIsSilent)
{
    m_story.becomesStable().losesPictor().says(50, "EMERG", kTooMany);
    m_window.isAnswering = false;
    EXPECT_THAT(spansOf(timeline()),
                ElementsAre("starting 8-10", "stable 10-23", "unstable 23-50", "rebooting 50-60"));
    EXPECT_THAT(actionsOf(timeline()),
                ElementsAre("8 the supervisor started",
                            "50 too many package restarts: the device is rebooted"));
}

TEST_F(TimelineTest, RebootIsKnownWithoutTrace)
{
    m_story.starts(10).says(50, "EMERG", kTooMany);
    EXPECT_THAT(spansOf(timeline()),
                ElementsAre("unknown 10-50: TRACE was masked", "rebooting 50-60"));
}

TEST_F(TimelineTest, ScriptsLastUntilTheSupervisorsNextRecord)
{
    m_story.becomesStable().losesPictor().says(25, "WARN", kPictorDead);
    m_story.traces(25.04, "SuprDown::exit (com.orvo.pictor)").restartsPackage(30);
    m_story.traces(33.5, "SuprUnstableSystem::exit").traces(33.5, "SuprStartingSystem::entry");
    EXPECT_THAT(actionsOf(timeline()),
                ElementsAre("8 the supervisor started",
                            "25 pictor was restarted by its script, 40 ms",
                            "30 the whole software package was restarted, 3.5 s"));
}

TEST_F(TimelineTest, ScriptOfAFormerSupervisorHasNoLength)
{
    m_story.becomesStable().says(25, "WARN", kPictorDead).process(8).starts(40);
    EXPECT_THAT(actionsOf(timeline()),
                ElementsAre("8 the supervisor started", "25 pictor was restarted by its script",
                            "40 the supervisor started"));
}

TEST_F(TimelineTest, DeveloperModeOnlyNotes)
{
    m_story.startsDeveloper(1).traces(1, "SuprUnstableSystem::entry");
    m_story.says(5, "WARN", std::string(kPictorDead) + " .... (disabled)");
    m_story.says(12, "FATAL", "SUPERVISOR would restart mf-optware, but saved via developer mode");
    m_story.traces(12, "SuprUnstableSystem::exit").traces(12, "SuprStartingSystem::entry");
    // The second one is not written down again, and follows from the states.
    m_story.traces(18, "SuprUnstableSystem::entry").traces(29, "SuprStartingSystem::entry");
    m_story.traces(35, "SuprUnstableSystem::entry").says(46, "EMERG", kTooMany);
    m_story.traces(46, "SuprUnstableSystem::exit").traces(46, "SuprRebootSystem::entry");
    const Timeline shown = timeline();
    EXPECT_TRUE(shown.isDeveloper);
    EXPECT_THAT(actionsOf(shown),
                ElementsAre("1 the supervisor started in developer mode",
                            "5 pictor: restart only noted: developer mode",
                            "12 package restart only noted: developer mode",
                            "29 package restart only noted: developer mode",
                            "46 too many package restarts: reboot only noted: developer mode"));
    EXPECT_THAT(spansOf(shown), ElementsAre("unstable 1-12", "starting 12-18", "unstable 18-29",
                                            "starting 29-35", "unstable 35-60"));
}

TEST_F(TimelineTest, MarkerTellsDeveloperModeWhenTheLogNoLongerDoes)
{
    m_story.says(46, "EMERG", kTooMany).traces(46, "SuprRebootSystem::entry");
    EXPECT_THAT(spansOf(timeline()), ElementsAre("rebooting 46-60"));
    m_window.isMarked = true;
    EXPECT_THAT(spansOf(timeline()), ElementsAre("unstable 46-60"));
}

TEST_F(TimelineTest, RowOfMissedFeedsIsOneAction)
{
    m_story.starts(1);
    for (const double time : {10.0, 11.0, 12.0, 20.0})
    {
        m_story.says(time, "WARN", "Bello is dead!!!");
    }
    EXPECT_THAT(actionsOf(timeline()),
                ElementsAre("1 the supervisor started", "10 the watchdog could not be fed",
                            "20 the watchdog could not be fed"));
}

TEST_F(TimelineTest, BusTellsWhatOthersDo)
{
    m_story.becomesStable().traces(20, "DBus Service com.orvo.pictor unavailable");
    m_story.traces(20.3, "DBus service com.orvo.pictor available");
    m_story.traces(30, "DBus Service com.orvo.vistor unavailable");
    m_story.traces(32, "DBus service com.orvo.vistor available");
    EXPECT_THAT(actionsOf(timeline()),
                ElementsAre("8 the supervisor started",
                            "20 pictor left the bus and came back, 0.3 s",
                            "30 corvane left the bus", "32 corvane came to the bus"));
}

TEST_F(TimelineTest, BusIsSilentAboutTheSupervisorsOwnScripts)
{
    m_story.becomesStable().says(20, "WARN", kPictorDead);
    m_story.traces(23, "DBus Service com.orvo.pictor unavailable");
    m_story.traces(23.9, "DBus service com.orvo.pictor available");
    m_story.traces(23.9, "DBus Service com.orvo.vistor unavailable");
    EXPECT_THAT(actionsOf(timeline()), ElementsAre("8 the supervisor started",
                                                   "20 pictor was restarted by its script, 3.0 s",
                                                   "23.9 corvane left the bus"));
}

TEST_F(TimelineTest, RecordsOfAnEarlierLifeOfTheDeviceAreLeftOut)
{
    m_story.starts(5000).restartsPackage(5010).process(9).becomesStable();
    const Timeline shown = timeline();
    EXPECT_EQ(2U, shown.earlier);
    EXPECT_THAT(spansOf(shown), ElementsAre("starting 8-10", "stable 10-60"));
    EXPECT_THAT(actionsOf(shown), ElementsAre("8 the supervisor started"));
}

TEST_F(TimelineTest, RecordOfATimeToComeCountsAsThePresent)
{
    RecordStory story;
    const Timeline timeline =
        timelineOf(story.says(30.5, "ERROR", "x").records(), {std::nullopt, 30, true, false});
    EXPECT_THAT(spansOf(timeline), ElementsAre("unknown 29-30: the log begins later"));
}

TEST_F(TimelineTest, RecordsOutOfOrderLeaveNoGap)
{
    RecordStory story;
    story.traces(10, "SuprStableSystem::entry").traces(9.5, "SuprUnstableSystem::entry");
    const Timeline timeline = timelineOf(story.records(), {std::nullopt, 12, true, false});
    EXPECT_THAT(spansOf(timeline), ElementsAre("unstable 10-12"));
}

TEST_F(TimelineTest, OtherProgramsSayNothing)
{
    m_story.becomesStable().says(70000, "WARN", kPictorDead, "pictor");
    m_story.says(1, "FATAL", "SuprUnstableSystem::entry", "pictor");
    EXPECT_THAT(spansOf(timeline()), ElementsAre("starting 8-10", "stable 10-60"));
    EXPECT_EQ(0U, timeline().earlier);
}

TEST_F(TimelineTest, LabelsAreShort)
{
    using Kind = TimelineAction::Kind;
    const auto label = [](Kind kind, bool isNoted)
    {
        return actionLabel({kind, 0, kPictorBusName, std::nullopt, isNoted});
    };
    EXPECT_EQ("supervisor started", label(Kind::SupervisorStart, true));
    EXPECT_EQ("package restart", label(Kind::PackageRestart, false));
    EXPECT_EQ("would restart package", label(Kind::PackageRestart, true));
    EXPECT_EQ("reboot", label(Kind::Reboot, false));
    EXPECT_EQ("would reboot", label(Kind::Reboot, true));
    EXPECT_EQ("watchdog not fed", label(Kind::Unfed, false));
    EXPECT_EQ("restart", label(Kind::ServiceRestart, false));
    EXPECT_EQ("would restart", label(Kind::ServiceRestart, true));
    EXPECT_EQ("off the bus", label(Kind::LeftBus, false));
    EXPECT_EQ("on the bus", label(Kind::CameToBus, false));
    EXPECT_EQ("off and on the bus", label(Kind::Rejoined, false));
}

} // namespace orvo::ctl
