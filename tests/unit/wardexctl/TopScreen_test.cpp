#include "top/TopScreen.h"

#include "RecordStory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

namespace orvo::ctl
{

using test::RecordStory;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class TopScreenTest : public testing::Test
{
protected:
    TopScreenTest()
    {
        qputenv("TZ", "UTC");
        tzset();
        m_state.view.clock = {30, 1795239526000};
        m_state.view.overview.answer.kind = BusAnswer::Kind::Answered;
        m_state.view.overview.services = {{"com.orvo.vistor", "up", true, true},
                                          {"com.orvo.pictor", "up", true, true},
                                          {"com.orvo.wirl", "up", false, false}};
        m_state.isBusKnown = true;
        m_state.isLogKnown = true;
        RecordStory story;
        tell(story.becomesStable());
    }

    void tell(const RecordStory& story)
    {
        m_state.view.facts = story.facts();
        m_state.log = TopLog();
        m_state.log.add(story.records());
        m_state.feedGap.add(story.records());
    }

    /// Presses the keys of a text, and asks for the last one's request.
    TopRequest press(const std::string& text)
    {
        TopRequest request;
        for (const char each : text)
        {
            request = m_state.press({TopKey::Character, each});
        }
        return request;
    }

    TopScreen screen(std::size_t rows = 24, std::size_t columns = 80)
    {
        TopScreen screen = TopScreen::of(m_state, {rows, columns});
        m_state.logHeight = screen.logHeight;
        m_state.isHidden = screen.isTooSmall;
        return screen;
    }

    std::vector<std::string> lines(std::size_t rows = 24, std::size_t columns = 80)
    {
        std::vector<std::string> lines;
        for (const StyledLine& line : screen(rows, columns).lines)
        {
            lines.push_back(textOf(Output(false, false), line));
        }
        return lines;
    }

    TopState m_state;
};

TEST_F(TopScreenTest, ShowsAStableDevice)
{
    const auto shown = lines();
    ASSERT_EQ(24U, shown.size());
    EXPECT_THAT(
        std::vector<std::string>(shown.begin(), shown.begin() + 14),
        ElementsAre(
            "stable             family ZK4XX, supervisor answers, started 22 s ago", "",
            "SERVICE  RUN LEVEL  PROCESS       AVAILABLE             STRIKES  LAST SCRIPT",
            ">corvane up         runs          up for 20 s           0 of 3   -",
            " pictor  up         runs          up for 20 s           0 of 3   -",
            " wirl    -          runs          not judged            -        -", "",
            "Restarts  0 of 3 package restarts in 300 s; need number 4 in that time reboots",
            "Next      nothing, while both judged services answer",
            "Watchdog  gap between feeds not told; no script in the records held it up", "",
            "Log  all levels, 11 of 11, following",
            "05:38:24.000 WARN  wardex wardex: supervision activity starting, Bello the watc",
            "05:38:24.000 WARN  wardex Registerinng services for the ZK4XX family of devices"));
    EXPECT_EQ("05:38:26.000 TRACE wardex SuprStableSystem::entry", shown[22]);
    EXPECT_EQ("q quit  ? help  j/k service  s start  x stop  r restart  / filter  l level",
              shown[23]);
}

TEST_F(TopScreenTest, NeverLeavesTheTerminal)
{
    RecordStory story;
    m_state.view.isDeveloper = true;
    m_state.view.overview.services.push_back({"com.orvo.quorl", "up", false, false});
    story.becomesStable().losesPictor().says(29, "WARN", std::string(300, 'x'));
    tell(story.says(29, "WARN", "Bello is dead!!!"));
    m_state.view.facts.isTraceSeen = false;
    m_state.silentSeconds = 3;
    for (const std::size_t rows : {1U, 2U, 3U, 23U, 24U, 60U})
    {
        for (const std::size_t columns : {1U, 10U, 79U, 80U, 200U})
        {
            const auto shown = lines(rows, columns);
            EXPECT_LE(shown.size(), rows);
            EXPECT_THAT(shown, testing::Each(testing::Truly([&](const std::string& line)
                                                            { return line.size() < columns; })));
        }
    }
    EXPECT_EQ(4U, screen().logHeight);
}

TEST_F(TopScreenTest, SaysThatTheTerminalIsTooSmallAndTakesNoDeedThen)
{
    EXPECT_THAT(lines(23, 80), ElementsAre("Too small: 80x23.", "Needs 80x24.", "q quits."));
    EXPECT_THAT(lines(24, 79), ElementsAre("Too small: 79x24.", "Needs 80x24.", "q quits."));
    EXPECT_EQ(TopRequest::Kind::None, press("xy").kind);
    EXPECT_EQ(TopRequest::Kind::Quit, press("q").kind);
    EXPECT_EQ(TopState::Mode::Look, m_state.mode());
    EXPECT_THAT(lines(24, 80)[0], StartsWith("stable"));
}

TEST_F(TopScreenTest, SaysWhyTheSupervisorIsSilent)
{
    m_state.view.overview = {};
    m_state.view.overview.answer.kind = BusAnswer::Kind::NoSupervisor;
    EXPECT_EQ("com.orvo.wardex: nobody owns this name on the system bus", lines()[1]);
}

TEST_F(TopScreenTest, SaysThatTheSupervisorIsSlowBeforeItIsSilent)
{
    m_state.silentSeconds = 2.5;
    EXPECT_THAT(lines(), Not(Contains(StartsWith("The supervisor has not answered"))));
    m_state.silentSeconds = 2.6;
    EXPECT_EQ("The supervisor has not answered for 2.6 s.", lines()[1]);
}

TEST_F(TopScreenTest, ClaimsNothingBeforeItHasAsked)
{
    m_state.isLogKnown = false;
    EXPECT_EQ("Asking the supervisor and the log ...", lines()[0]);
    EXPECT_THAT(lines(), Not(Contains(StartsWith("SERVICE"))));
}

TEST_F(TopScreenTest, SaysDeveloperModeInRed)
{
    m_state.view.isDeveloper = true;
    EXPECT_EQ(Tone::Bad, screen().lines[1].front().tone);
    EXPECT_EQ("DEVELOPER MODE: nothing is restarted or rebooted", lines()[1]);
}

TEST_F(TopScreenTest, ShowsBytesThatNoTerminalKnowsAsQuestionMarks)
{
    m_state.view.overview.answer.kind = BusAnswer::Kind::NoBus;
    m_state.view.overview.answer.detail = "T\303\274r\033[2J";
    EXPECT_EQ("system bus: cannot be reached (T?r?[2J)", lines()[1]);
}

TEST_F(TopScreenTest, DeedsAreAskedForByNameAndConfirmed)
{
    press("jx");
    EXPECT_EQ("Stop pictor? y/n", lines()[23]);
    const TopRequest stop = press("y");
    EXPECT_EQ(TopRequest::Kind::Act, stop.kind);
    EXPECT_EQ(Deed::Stop, stop.deed);
    EXPECT_EQ("com.orvo.pictor", stop.service.name);
    press("s");
    EXPECT_EQ("Start pictor? y/n", lines()[23]);
    EXPECT_EQ(TopRequest::Kind::None, press("n").kind);
    EXPECT_EQ("Nothing was done.", lines()[23]);
    EXPECT_EQ(TopRequest::Kind::None, press("y").kind);
    press("r");
    EXPECT_EQ("Restart pictor? y/n", lines()[23]);
    m_state.press({TopKey::Escape});
    EXPECT_EQ("Nothing was done.", lines()[23]);
}

TEST_F(TopScreenTest, OneDeedAtATime)
{
    m_state.busyText = "waiting for the script of pictor ... 3 s";
    EXPECT_EQ("waiting for the script of pictor ... 3 s", lines()[23]);
    press("x");
    EXPECT_EQ("One thing after the other: waiting for the script of pictor ... 3 s", lines()[23]);
    EXPECT_EQ(TopState::Mode::Look, m_state.mode());
}

TEST_F(TopScreenTest, SelectionStopsAtTheEndsAndOutlivesASilentSupervisor)
{
    press("k");
    EXPECT_EQ("com.orvo.vistor", m_state.selected());
    press("jjjjj");
    EXPECT_EQ("com.orvo.wirl", m_state.selected());
    m_state.view.overview.services.clear();
    EXPECT_EQ("", m_state.selected());
    press("s");
    EXPECT_EQ("There is no service: the supervisor told of none.", lines()[23]);
}

TEST_F(TopScreenTest, FilterIsEnteredAndEdited)
{
    press("/Up:");
    m_state.press({TopKey::Backspace});
    EXPECT_EQ("Filter (Enter takes it): Up", lines()[23]);
    EXPECT_EQ(27U, screen().cursor);
    EXPECT_EQ(TopState::Mode::Entry, m_state.mode());
    m_state.press({TopKey::Enter});
    EXPECT_THAT(lines(), Contains("Log  all levels, matching /Up/, 4 of 11, following"));
    EXPECT_FALSE(screen().cursor);
    press("/");
    m_state.press({TopKey::EraseLine});
    press("q");
    m_state.press({TopKey::Escape});
    EXPECT_EQ("Up", m_state.log.filter());
    press("/(");
    m_state.press({TopKey::Enter});
    EXPECT_THAT(lines()[23], StartsWith("'Up(' is no regular expression: "));
    press("c");
    EXPECT_EQ("", m_state.log.filter());
}

TEST_F(TopScreenTest, LongEntryShowsItsEnd)
{
    press("/" + std::string(60, 'a') + "z");
    EXPECT_EQ("Filter (Enter takes it): " + std::string(49, 'a') + "z", lines()[23]);
    EXPECT_EQ(75U, screen().cursor);
}

TEST_F(TopScreenTest, HelpGoesWithAnyKeyWhichDoesNothingElse)
{
    press("?");
    EXPECT_EQ("Keys", lines()[2]);
    EXPECT_EQ("Any key goes back.", lines()[23]);
    EXPECT_EQ(TopRequest::Kind::None, press("q").kind);
    EXPECT_THAT(lines(), Not(Contains("Keys")));
}

TEST_F(TopScreenTest, KeysScrollTheLog)
{
    RecordStory story;
    for (int number = 0; number < 50; ++number)
    {
        story.says(20, "WARN", std::to_string(number));
    }
    m_state.log.add(story.records());
    const std::size_t height = screen().logHeight;
    ASSERT_EQ(11U, height);
    press("-");
    EXPECT_THAT(lines()[22], testing::EndsWith(" 48"));
    m_state.press({TopKey::PageUp});
    EXPECT_THAT(lines(), Contains("Log  all levels, 61 of 61, 11 newer (f follows)"));
    m_state.press({TopKey::PageDown});
    press("+");
    EXPECT_TRUE(m_state.log.isFollowing());
    m_state.press({TopKey::Home});
    EXPECT_EQ(50U, m_state.log.newer());
    m_state.press({TopKey::End});
    EXPECT_TRUE(m_state.log.isFollowing());
    press("g b f");
    EXPECT_TRUE(m_state.log.isFollowing());
}

TEST_F(TopScreenTest, UnknownKeySaysWhereHelpIs)
{
    press("Z");
    EXPECT_EQ("This key does nothing; ? shows those that do.", lines()[23]);
    press("j");
    EXPECT_THAT(lines()[23], StartsWith("q quit"));
}

} // namespace orvo::ctl
