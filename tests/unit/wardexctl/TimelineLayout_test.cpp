#include "timeline/LabelLayout.h"
#include "timeline/LaneCells.h"
#include "timeline/TimeScale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace orvo::ctl
{

using testing::ElementsAre;

namespace
{
std::vector<std::string> labelsOf(const std::vector<Tick>& ticks)
{
    std::vector<std::string> labels;
    labels.reserve(ticks.size());
    for (const Tick& tick : ticks)
    {
        labels.push_back(std::to_string(static_cast<int>(tick.time)) + " " + tick.label);
    }
    return labels;
}
} // namespace

class TimeScaleTest : public testing::Test
{
protected:
    void SetUp() override
    {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
        setenv("TZ", "UTC", 1);
        tzset();
    }

    /// 05:38:46 at 100 s.
    DeviceClock m_clock{100, 1795066726000};
};

TEST_F(TimeScaleTest, StepIsTheSmallestRoundOneThatFits)
{
    EXPECT_EQ(1, roundStep(5, 5));
    EXPECT_EQ(2, roundStep(5.1, 5));
    EXPECT_EQ(15, roundStep(60, 5));
    EXPECT_EQ(1800, roundStep(9000, 5));
    EXPECT_EQ(604800, roundStep(2592000, 5));
    EXPECT_EQ(2 * 2419200, roundStep(2 * 5 * 2419200.0, 5));
}

TEST_F(TimeScaleTest, WallTicksStandAtRoundTimes)
{
    EXPECT_THAT(labelsOf(wallTicks(70, 100, m_clock, 3)),
                ElementsAre("74 05:38:20", "84 05:38:30", "94 05:38:40"));
    EXPECT_THAT(labelsOf(wallTicks(-500, 100, m_clock, 3)),
                ElementsAre("-426 05:30", "-126 05:35"));
}

TEST_F(TimeScaleTest, LongTimesShowTheDay)
{
    const auto shown = [this](double begin)
    {
        std::vector<std::string> labels;
        for (const Tick& tick : wallTicks(begin, 100, m_clock, 3))
        {
            labels.push_back(tick.label);
        }
        return labels;
    };
    EXPECT_THAT(shown(-90000), ElementsAre("11-18 12:00", "11-19 00:00"));
    EXPECT_THAT(shown(-200000), ElementsAre("11-17", "11-18", "11-19"));
}

TEST_F(TimeScaleTest, AgeTicksBeginWithThePresentAndKeepOneUnit)
{
    EXPECT_THAT(labelsOf(ageTicks(30, 100, 5)),
                ElementsAre("100 now", "85 15 s", "70 30 s", "55 45 s", "40 60 s"));
    EXPECT_THAT(labelsOf(ageTicks(0, 240, 5)),
                ElementsAre("240 now", "180 1 min", "120 2 min", "60 3 min", "0 4 min"));
    EXPECT_THAT(labelsOf(ageTicks(0, 7200, 2)), ElementsAre("7200 now", "3600 1 h", "0 2 h"));
    EXPECT_THAT(labelsOf(ageTicks(0, 172800, 2)), ElementsAre("172800 now", "86400 1 d", "0 2 d"));
}

class LaneCellsTest : public testing::Test
{
protected:
    static std::vector<Health> worst(const std::vector<LaneCell>& cells)
    {
        std::vector<Health> healths;
        healths.reserve(cells.size());
        for (const LaneCell& cell : cells)
        {
            healths.push_back(cell.worst());
        }
        return healths;
    }

    std::vector<TimelineSpan> m_spans{{0, 4, Health::Up, ""},
                                      {4, 4.1, Health::Down, ""},
                                      {4.1, 8, Health::Up, ""},
                                      {8, 10, Health::Unknown, ""}};
};

TEST_F(LaneCellsTest, ShowTheWorstOfTheirTime)
{
    EXPECT_THAT(worst(laneCells(m_spans, 0, 10, 5)),
                ElementsAre(Health::Up, Health::Up, Health::Down, Health::Up, Health::Unknown));
}

TEST_F(LaneCellsTest, SpanThatEndsAtTheEdgeHasNothingOfTheNext)
{
    const auto cells = laneCells(m_spans, 0, 10, 10);
    EXPECT_EQ(Health::Up, cells[3].worst());
    EXPECT_EQ(Health::Down, cells[4].worst());
    EXPECT_EQ(1, cells[3].spans);
    EXPECT_NEAR(0.1, cells[4].secondsOf(Health::Down), 1e-9);
}

TEST_F(LaneCellsTest, AreMixedWhenMuchHappenedAndMostOfItWasBetter)
{
    EXPECT_TRUE(laneCells(m_spans, 0, 10, 1)[0].isMixed());
    m_spans[1].end = m_spans[2].begin = 9;
    m_spans[2].end = m_spans[3].begin = 9.5;
    EXPECT_FALSE(laneCells(m_spans, 0, 10, 1)[0].isMixed());
    m_spans.resize(2);
    m_spans[1] = {9.9, 10, Health::Down, ""};
    m_spans[0].end = 9.9;
    EXPECT_FALSE(laneCells(m_spans, 0, 10, 1)[0].isMixed());
}

TEST_F(LaneCellsTest, DrawnOnesAreSpansAndColumnsOfManyShortOnes)
{
    TimelineLane lane;
    lane.spans.push_back({0, 10, Health::Up, ""});
    for (int index = 0; index < 20; ++index)
    {
        const double begin = 10 + index * 0.5;
        lane.spans.push_back({begin, begin + 0.5, index % 2 == 0 ? Health::Down : Health::Up, ""});
    }
    lane.spans.push_back({20, 30, Health::Up, ""});
    const auto cells = drawnCells(lane, 2);
    ASSERT_EQ(7U, cells.size());
    EXPECT_EQ(1, cells.front().spans);
    EXPECT_EQ(10, cells.front().end);
    for (std::size_t index = 1; index < 6; ++index)
    {
        EXPECT_DOUBLE_EQ(1, cells[index].secondsOf(Health::Down)) << index;
        EXPECT_DOUBLE_EQ(2, cells[index].end - cells[index].begin);
    }
    EXPECT_EQ(30, cells.back().end);
}

TEST_F(LaneCellsTest, TimeOutsideCountsToTheNearestCell)
{
    EXPECT_EQ(0U, cellOf(-1, 0, 10, 5));
    EXPECT_EQ(1U, cellOf(2, 0, 10, 5));
    EXPECT_EQ(4U, cellOf(10, 0, 10, 5));
}

class LabelLayoutTest : public testing::Test
{
protected:
    /// "restart@3/0 ..." with left edge and row.
    static std::vector<std::string> shown(const std::vector<PlacedLabel>& placed)
    {
        std::vector<std::string> texts;
        texts.reserve(placed.size());
        for (const PlacedLabel& label : placed)
        {
            texts.push_back(label.text + "@" + std::to_string(static_cast<int>(label.left)) + "/" +
                            std::to_string(label.row));
        }
        return texts;
    }

    LabelRoom m_room{0, 100, 1, 1, 3};
};

TEST_F(LabelLayoutTest, LabelsWithRoomStandInTheFirstRow)
{
    EXPECT_THAT(shown(placeLabels({{0, "restart"}, {8, "reboot"}}, m_room)),
                ElementsAre("restart@0/0", "reboot@8/0"));
}

TEST_F(LabelLayoutTest, LabelWithoutRoomGoesBelow)
{
    EXPECT_THAT(shown(placeLabels({{0, "restart"}, {7, "reboot"}}, m_room)),
                ElementsAre("restart@0/1", "reboot@7/0"));
}

TEST_F(LabelLayoutTest, LabelAtTheEndReachesBack)
{
    EXPECT_THAT(shown(placeLabels({{99, "reboot"}}, m_room)), ElementsAre("reboot@94/0"));
}

TEST_F(LabelLayoutTest, ThoseOfOnePlaceAreCounted)
{
    EXPECT_THAT(shown(placeLabels({{5, "restart"}, {5, "restart"}, {5.5, "reboot"}}, m_room)),
                ElementsAre("2 x restart, reboot@5/0"));
}

TEST_F(LabelLayoutTest, NoneIsLostWhenThereIsNoRoom)
{
    m_room.rows = 1;
    int count = 0;
    for (const PlacedLabel& label :
         placeLabels({{0, "restart"}, {4, "restart"}, {8, "restart"}, {12, "restart"}}, m_room))
    {
        count += label.text == "restart" ? 1 : std::stoi(label.text);
    }
    EXPECT_EQ(4, count);
}

TEST_F(LabelLayoutTest, NothingEverOverlaps)
{
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same labels in each run
    std::mt19937 random(1);
    std::uniform_real_distribution<double> place(0, 100);
    for (int round = 0; round < 200; ++round)
    {
        std::vector<Label> labels;
        labels.reserve(static_cast<std::size_t>(round));
        for (int index = 0; index < round; ++index)
        {
            labels.push_back({place(random), index % 3 == 0 ? "package restart" : "restart"});
        }
        std::sort(labels.begin(), labels.end(),
                  [](const Label& one, const Label& other) { return one.x < other.x; });
        const auto placed = placeLabels(labels, m_room);
        for (const PlacedLabel& one : placed)
        {
            EXPECT_LT(one.row, m_room.rows);
            for (const PlacedLabel& other : placed)
            {
                EXPECT_TRUE(&one == &other || one.row != other.row ||
                            one.left + one.width <= other.left ||
                            other.left + other.width <= one.left);
                // Its line does not cross a text above.
                EXPECT_FALSE(other.row < one.row && one.x > other.left &&
                             one.x < other.left + other.width);
            }
        }
    }
}

} // namespace orvo::ctl
