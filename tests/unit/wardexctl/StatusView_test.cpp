#include "verbs/StatusView.h"

#include "RecordStory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>

#include <ctime>

namespace orvo::ctl
{

using test::RecordStory;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::Truly;

class StatusViewTest : public testing::Test
{
protected:
    StatusViewTest()
    {
        qputenv("TZ", "UTC");
        tzset();
        m_view.clock = {30, 1795239526000};
        m_view.overview.answer.kind = BusAnswer::Kind::Answered;
        m_view.overview.services = {{"com.orvo.vistor", "up", true, true},
                                    {"com.orvo.pictor", "up", true, true},
                                    {"com.orvo.wirl", "up", false, false}};
    }

    std::vector<std::string> lines(const RecordStory& story)
    {
        m_view.facts = story.facts();
        m_view.records = story.records();
        if (m_view.records.size() > 10)
        {
            m_view.records.erase(m_view.records.begin(), m_view.records.end() - 10);
        }
        return statusLines(Output(false, false), m_view);
    }

    StatusView m_view;
};

TEST_F(StatusViewTest, ShowsAStableDevice)
{
    RecordStory story;
    auto shown = lines(story.becomesStable());
    shown.resize(9);
    EXPECT_THAT(
        shown, ElementsAre(
                   "stable             family ZK4XX, supervisor answers, started 22 s ago", "",
                   "SERVICE  RUN LEVEL  PROCESS       AVAILABLE             STRIKES  LAST SCRIPT",
                   "corvane  up         runs          up for 20 s           0 of 3   -",
                   "pictor   up         runs          up for 20 s           0 of 3   -",
                   "wirl     -          runs          not judged            -        -", "",
                   "Restarts  0 of 3 package restarts in 300 s; need number 4 in that time reboots",
                   "Next      nothing, while both judged services answer"));
}

TEST_F(StatusViewTest, ShowsWhatComesNextToADeviceThatLostAService)
{
    m_view.clock.monotonic = 24;
    m_view.overview.services[1].isListed = false;
    RecordStory story;
    const auto shown = lines(story.becomesStable().losesPictor());
    EXPECT_THAT(shown[0], StartsWith("unstable "));
    EXPECT_THAT(shown,
                Contains("pictor   no answer  runs          down for 1.0 s        1 of 1   -"));
    EXPECT_THAT(shown,
                Contains("Next      in about 1.0 s: pictor is stopped and started by its script"));
    EXPECT_THAT(shown,
                Contains("          in about 10 s: the whole software package is restarted"));
}

TEST_F(StatusViewTest, FitsAScreenOfAnySerialConsole)
{
    RecordStory story;
    m_view.isDeveloper = true;
    m_view.overview.services.push_back({"com.orvo.quorl", "up", false, false});
    story.becomesStable().losesPictor().says(29, "WARN", std::string(300, 'x'));
    story.says(29, "WARN", "Bello is dead!!!");
    const auto shown = lines(story);
    EXPECT_THAT(shown, SizeIs(testing::Le(24U)));
    EXPECT_THAT(shown, Each(Truly([](const std::string& line) { return line.size() < 80; })));
}

TEST_F(StatusViewTest, FitsTheScreenWithTheLongestNamesToo)
{
    const std::string name(200, 'n');
    RecordStory story;
    story.startsDeveloper(1).says(2, "WARN",
                                  "Registerinng services for the " + name + " family of devices");
    story.traces(3, "SuprDown::entry (com.orvo.vistor)").traces(4, "SuprUp::entry (" + name + ")");
    m_view.overview.answer.kind = BusAnswer::Kind::NoSupervisor;
    EXPECT_THAT(lines(story),
                Each(Truly([](const std::string& line) { return line.size() < 80; })));
}

TEST_F(StatusViewTest, FitsTheScreenWithoutTraceToo)
{
    RecordStory story;
    story.starts(1);
    for (int number = 0; number < 10; ++number)
    {
        story.says(2, "WARN", "m");
    }
    const auto shown = lines(story);
    EXPECT_THAT(shown, SizeIs(testing::Le(24U)));
    EXPECT_THAT(shown, Contains("  wardexctl loglevel wardex +TRACE"));
    EXPECT_THAT(shown, Each(Truly([](const std::string& line) { return line.size() < 80; })));
}

TEST_F(StatusViewTest, SaysDeveloperModeInRedOnATerminalAndInWordsEverywhere)
{
    m_view.isDeveloper = true;
    EXPECT_THAT(lines(RecordStory().startsDeveloper(1)),
                Contains("DEVELOPER MODE: nothing is restarted or rebooted"));
    EXPECT_THAT(statusLines(Output(false, true), m_view),
                Contains("\033[31mDEVELOPER MODE: nothing is restarted or rebooted\033[0m"));
}

TEST_F(StatusViewTest, KnowsTheServicesFromTheRecordsWhenTheSupervisorIsSilent)
{
    m_view.overview = {};
    m_view.overview.answer.kind = BusAnswer::Kind::NoSupervisor;
    RecordStory story;
    const auto shown = lines(story.becomesStable());
    EXPECT_EQ("supervisor silent  family ZK4XX, supervisor does not answer", shown[0]);
    EXPECT_THAT(shown,
                Contains("pictor   up         ?             up for 20 s           -        -"));
    EXPECT_THAT(shown, Contains("Next      nobody feeds the watchdog: it will reset the device"));
}

TEST_F(StatusViewTest, LogWithoutTheSupervisorMayBeMaskedOrLost)
{
    const auto shown = lines(RecordStory());
    EXPECT_THAT(shown, Contains("The log has nothing of the supervisor: TRACE is masked, or its "
                                "log was lost;"));
    EXPECT_THAT(shown, Contains("  wardexctl loglevel wardex +TRACE; if nothing comes: wardexctl "
                                "doctor"));
    EXPECT_THAT(shown, Not(Contains("  wardexctl loglevel wardex +TRACE")));
}

TEST_F(StatusViewTest, SaysThatTheLogDoesNotAnswer)
{
    m_view.hasLog = false;
    const auto shown = lines(RecordStory());
    EXPECT_THAT(shown, Contains("The log does not answer: states are not known."));
    EXPECT_THAT(shown, Contains("Restarts  not known"));
    EXPECT_TRUE(statusJson(m_view)["restarts"].toObject()["used"].isNull());
    EXPECT_THAT(shown, Not(Contains("  wardexctl loglevel wardex +TRACE")));
}

TEST_F(StatusViewTest, OneServiceIsShownAloneWhenAskedFor)
{
    m_view.only = "com.orvo.pictor";
    RecordStory story;
    lines(story.becomesStable());
    EXPECT_THAT(m_view.services(), SizeIs(1));
    EXPECT_EQ(1, statusJson(m_view)["services"].toArray().size());
}

TEST_F(StatusViewTest, JsonHasTheVerdictTheServicesAndTheBudget)
{
    RecordStory story;
    lines(story.becomesStable().losesPictor().restartsPackage(29));
    const QJsonObject json = statusJson(m_view);
    EXPECT_EQ(1, json["schema"].toInt());
    EXPECT_EQ("status", json["verb"].toString());
    EXPECT_EQ("unstable", json["verdict"].toString());
    EXPECT_EQ("SuprUnstableSystem", json["systemState"].toString());
    EXPECT_EQ("ZK4XX", json["family"].toString());
    EXPECT_EQ(1, json["restarts"].toObject()["used"].toInt());
    EXPECT_EQ(299.0, json["restarts"].toObject()["freeSeconds"].toDouble());
    const QJsonObject pictor = json["services"].toArray()[1].toObject();
    EXPECT_EQ("SuprDown", pictor["state"].toString());
    EXPECT_EQ("none", pictor["runLevel"].toString());
    EXPECT_FALSE(pictor["available"].toBool());
    EXPECT_EQ(7.0, pictor["availableSeconds"].toDouble());
    EXPECT_TRUE(pictor["lastScriptSeconds"].isNull());
    EXPECT_TRUE(json["services"].toArray()[2].toObject()["available"].isNull());
}

} // namespace orvo::ctl
