#include "RecordStory.h"
#include "dbus-proxy/BusNames.h"
#include "timeline/TimelineJson.h"
#include "timeline/TimelinePicture.h"
#include "timeline/TimelineText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QXmlStreamReader>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace orvo::ctl
{

using test::RecordStory;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace
{

constexpr char kStoryDead[] = "Service com.orvo.pictor considered dead, restarting";

/// An element of a picture.
struct Shape
{
    std::string element;
    std::string style;
    double x{0};
    double y{0};
    double width{0};
    std::string title;
    std::string text;
};

/// All elements; fails on what is no XML.
std::vector<Shape> shapesOf(const QByteArray& picture)
{
    std::vector<Shape> shapes;
    QXmlStreamReader xml(picture);
    while (!xml.atEnd())
    {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("title") && !shapes.empty())
        {
            shapes.back().title = xml.readElementText().toStdString();
        }
        else if (xml.isStartElement())
        {
            const auto attributes = xml.attributes();
            shapes.push_back({xml.name().toString().toStdString(),
                              attributes.value("class").toString().toStdString(),
                              attributes.value("x").toDouble(), attributes.value("y").toDouble(),
                              attributes.value("width").toDouble(), "", ""});
        }
        else if (xml.isCharacters() && !shapes.empty())
        {
            shapes.back().text += xml.text().toString().toStdString();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return shapes;
}

} // namespace

class TimelineOutput : public testing::Test
{
protected:
    void SetUp() override
    {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
        setenv("TZ", "UTC", 1);
        tzset();
    }

    TimelineView view()
    {
        return {timelineOf(m_story.records(), m_window), {48, 1795066726000}, m_wallStep};
    }

    std::vector<std::string> lines(const Terminal& terminal = {})
    {
        return timelineLines(Output(false, false), view(), terminal);
    }

    /// pictor is restarted, then the package, and the device is stable again.
    void tellAStory()
    {
        m_story.becomesStable().losesPictor().says(25, "WARN", kStoryDead);
        m_story.traces(25.5, "SuprDown::exit (com.orvo.pictor)");
        m_story.traces(25.5, "SuprStarting::entry (com.orvo.pictor)").restartsPackage(30);
        m_story.traces(32, "SuprStartingSystem::entry");
        m_story.traces(38, "SuprUp::entry (com.orvo.pictor)");
        m_story.traces(38, "SuprStableSystem::entry");
    }

    RecordStory m_story;
    TimelineWindow m_window{std::nullopt, 48, true, false};
    std::optional<double> m_wallStep;
};

TEST_F(TimelineOutput, TextIsAScreenOfPlainCharacters)
{
    tellAStory();
    EXPECT_THAT(
        lines(),
        ElementsAre(
            "device stable for 10 s; 1 package restart, 1 service restart",
            "05:38:06 to 05:38:46 (40 s)", "",
            "time            05:38:10         05:38:20          05:38:30         05:38:40",
            "                |                |                 |                |",
            "device   ====######################________________===========#################",
            "         S                                     P",
            "corvane  ====##################################################################",
            "pictor   ====######################_____======================#################",
            "                                      R",
            "         |                |                 |                |                |",
            "ago      40 s             30 s              20 s             10 s           now", "",
            "# stable/up   = starting   _ unstable/down   S supervisor started",
            "R restart by script   P package restart", "", "05:38:06.000  the supervisor started",
            "05:38:23.000  pictor was restarted by its script, 0.5 s",
            "05:38:28.000  the whole software package was restarted, 2.0 s"));
}

TEST_F(TimelineOutput, Utf8TextHasTheSameShape)
{
    tellAStory();
    const auto plain = lines();
    auto full = lines({80, true});
    ASSERT_EQ(plain.size(), full.size());
    for (std::string& line : full)
    {
        QString text = QString::fromStdString(line);
        text.replace(QString::fromUtf8("\u2588"), "#").replace(QString::fromUtf8("\u2584"), "=");
        text.replace(QString::fromUtf8("\u2581"), "_").replace(QString::fromUtf8("\u00b7"), ".");
        line = text.toStdString();
    }
    EXPECT_EQ(plain, full);
}

TEST_F(TimelineOutput, NoLineIsWiderThanTheTerminal)
{
    tellAStory();
    m_story.starts(40).process(9).startsDeveloper(41);
    for (const std::size_t width : {40U, 80U, 133U})
    {
        std::size_t widest = 0;
        for (const std::string& line : lines({width, false}))
        {
            widest = std::max(widest, line.size());
        }
        EXPECT_LT(widest, width);
    }
}

TEST_F(TimelineOutput, ScreenHoldsTheLastActionsAndTellsOfTheOthers)
{
    tellAStory();
    for (int index = 0; index < 100; ++index)
    {
        m_story.says(40 + index * 0.05, "WARN", kStoryDead);
    }
    const auto shown = lines();
    EXPECT_EQ(23U, shown.size());
    EXPECT_EQ("97 earlier actions: --json, -o FILE.svg, or --since", shown[16]);
    EXPECT_EQ("05:38:42.950  pictor was restarted by its script", shown.back());
}

TEST_F(TimelineOutput, ColoursFollowTheStates)
{
    m_story.becomesStable();
    const auto shown = timelineLines(Output(false, true), view(), {});
    EXPECT_THAT(
        shown, Contains("device   \033[33m====\033[0m\033[32m" + std::string(66, '#') + "\033[0m"));
}

TEST_F(TimelineOutput, HiddenStatesNameTheCallThatShowsThem)
{
    m_story.starts(8).says(30, "WARN", kStoryDead);
    const auto shown = lines();
    EXPECT_EQ("device unknown; 1 service restart", shown[0]);
    EXPECT_THAT(shown, Contains("device   " + std::string(70, '.')));
    EXPECT_THAT(shown, Contains(". unknown   S supervisor started   R restart by script"));
    EXPECT_THAT(shown,
                Contains("States are logged at TRACE, which is masked; to see them from now on:"));
    EXPECT_EQ("  wardexctl loglevel wardex +TRACE", shown.back());
}

TEST_F(TimelineOutput, SilentSupervisorIsSaid)
{
    m_story.becomesStable();
    m_window.isAnswering = false;
    EXPECT_EQ("The supervisor does not answer: unknown since its last record.", lines().back());
}

TEST_F(TimelineOutput, EarlierLifeOfTheDeviceIsSaid)
{
    m_story.starts(5000).becomesStable();
    EXPECT_EQ("1 records of an earlier life of the device are left out.", lines().back());
}

TEST_F(TimelineOutput, WallTimesAreNotGuessedAfterTheClockWasSet)
{
    tellAStory();
    m_wallStep = -7200;
    const auto shown = lines();
    EXPECT_EQ("the last 40 s", shown[1]);
    EXPECT_THAT(shown, Not(Contains(HasSubstr("05:38"))));
    EXPECT_THAT(shown, Contains("23 s ago  pictor was restarted by its script, 0.5 s"));
    EXPECT_EQ("The wall clock was set back by 2 h 00 min since the log began: wall times are not "
              "known.",
              view().wallStep ? remarksOf(view()).back() : "");
    EXPECT_TRUE(timelineJson(view()).value("begin").isNull());
    for (const Shape& shape : shapesOf(timelineSvg(view())))
    {
        EXPECT_EQ(std::string::npos, (shape.text + shape.title).find("05:38"));
    }
}

TEST_F(TimelineOutput, DeveloperModeIsSaidAndItsLettersAreSmall)
{
    m_story.startsDeveloper(8).traces(8, "SuprUnstableSystem::entry");
    m_story.says(12, "FATAL", "SUPERVISOR would restart mf-optware, but saved via developer mode");
    m_story.traces(12, "SuprUnstableSystem::exit").traces(12, "SuprStartingSystem::entry");
    const auto shown = lines();
    EXPECT_EQ("device starting for 36 s; noted 1 package restart", shown[0]);
    EXPECT_EQ("05:38:06 to 05:38:46 (40 s), DEVELOPER MODE: nothing is restarted or rebooted",
              shown[1]);
    EXPECT_EQ("         S      p", shown[6]);
}

TEST_F(TimelineOutput, JsonHasSpansAndActions)
{
    m_story.becomesStable().losesPictor().says(25, "WARN", kStoryDead);
    m_story.traces(25.5, "SuprDown::exit (com.orvo.pictor)");
    const QJsonObject json = timelineJson(view());
    EXPECT_EQ(1, json["schema"].toInt());
    EXPECT_EQ("timeline", json["verb"].toString());
    EXPECT_EQ("2026-11-19T05:38:06.000Z", json["begin"].toString());
    EXPECT_EQ("2026-11-19T05:38:46.000Z", json["end"].toString());
    const QJsonObject pictor = json["lanes"].toArray()[2].toObject();
    EXPECT_EQ(
        R"({"name":"com.orvo.pictor","process":"pictor","spans":[)"
        R"({"age":40,"begin":"2026-11-19T05:38:06.000Z","seconds":2,"state":"starting","why":null},)"
        R"({"age":38,"begin":"2026-11-19T05:38:08.000Z","seconds":13,"state":"up","why":null},)"
        R"({"age":25,"begin":"2026-11-19T05:38:21.000Z","seconds":25,"state":"down","why":null}]})",
        QJsonDocument(pictor).toJson(QJsonDocument::Compact).toStdString());
    EXPECT_EQ(R"({"age":23,"noted":false,"seconds":0.5,"service":"com.orvo.pictor",)"
              R"("text":"pictor was restarted by its script, 0.5 s",)"
              R"("time":"2026-11-19T05:38:23.000Z","what":"service restart"})",
              QJsonDocument(json["actions"].toArray()[1].toObject())
                  .toJson(QJsonDocument::Compact)
                  .toStdString());
}

TEST_F(TimelineOutput, BarsOfThePictureFollowTheTimes)
{
    tellAStory();
    std::vector<std::string> bars;
    for (const Shape& shape : shapesOf(timelineSvg(view())))
    {
        if (shape.element == "rect" && !shape.title.empty() && shape.y < 130)
        {
            bars.push_back(shape.style + " " + std::to_string(static_cast<int>(shape.x)) + "+" +
                           std::to_string(static_cast<int>(shape.width)) + " " + shape.title);
        }
    }
    EXPECT_THAT(bars,
                ElementsAre("starting 110+47 starting for 2.0 s: 05:38:06.000 to 05:38:08.000",
                            "up 157+305 stable for 13 s: 05:38:08.000 to 05:38:21.000",
                            "down 462+211 unstable for 9.0 s: 05:38:21.000 to 05:38:30.000",
                            "starting 674+141 starting for 6.0 s: 05:38:30.000 to 05:38:36.000",
                            "up 815+235 stable for 10 s: 05:38:36.000 to 05:38:46.000"));
}

TEST_F(TimelineOutput, PictureTellsWhatWasDone)
{
    tellAStory();
    std::vector<std::string> marks;
    std::vector<std::string> labels;
    for (const Shape& shape : shapesOf(timelineSvg(view())))
    {
        if (shape.style == "mark" && !shape.title.empty())
        {
            marks.push_back(shape.title);
        }
        if (shape.style == "label")
        {
            labels.push_back(shape.text);
        }
    }
    EXPECT_THAT(marks, ElementsAre("05:38:06.000 the supervisor started",
                                   "05:38:28.000 the whole software package was restarted, 2.0 s",
                                   "05:38:23.000 pictor was restarted by its script, 0.5 s"));
    EXPECT_THAT(labels, ElementsAre("supervisor started", "package restart", "restart"));
}

TEST_F(TimelineOutput, NamesAreEscapedInThePicture)
{
    m_story.becomesStable().says(20, "WARN", "Service <b>&amp;\\\"' considered dead, restarting");
    const QByteArray picture = timelineSvg(view());
    EXPECT_FALSE(picture.contains("<b>"));
    std::vector<std::string> names;
    for (const Shape& shape : shapesOf(picture))
    {
        if (shape.style == "name")
        {
            names.push_back(shape.text);
        }
    }
    EXPECT_THAT(names, ElementsAre("device", "corvane", "pictor", "<b>&amp;\"'"));
}

TEST_F(TimelineOutput, PictureNeedsNothingElse)
{
    tellAStory();
    for (QByteArray picture : {timelineSvg(view()), timelineHtml(view())})
    {
        picture.replace("http://www.w3.org/2000/svg", "");
        for (const char* word : {"http", "href", "@import", "<script", "src="})
        {
            EXPECT_FALSE(picture.contains(word)) << word;
        }
    }
}

TEST_F(TimelineOutput, PageHoldsTheSamePicture)
{
    tellAStory();
    const QByteArray page = timelineHtml(view());
    const QByteArray picture = timelineSvg(view());
    EXPECT_TRUE(page.startsWith("<!DOCTYPE html>\n<html lang=\"en\">"));
    EXPECT_TRUE(page.contains(picture.mid(picture.indexOf("<svg")).trimmed()));
}

TEST_F(TimelineOutput, TenThousandChangesStayAPictureOfAModestSize)
{
    m_story.becomesStable();
    m_window.now = 5100;
    for (int time = 50; time < 5050; ++time)
    {
        m_story.traces(time, "SuprUnstableSystem::entry");
        m_story.traces(time + 0.2, "SuprStableSystem::entry");
    }
    EXPECT_LT(timelineSvg({timelineOf(m_story.records(), m_window), {5100, 0}, {}}).size(), 400000);
}

} // namespace orvo::ctl
