// Days and weeks of supervision with faults now and then: the supervisor must not grow.

#include "ProcessFigures.h"
#include "ProcessTables.h"
#include "SupervisedDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

namespace orvo::test
{

namespace
{

/// Ticks of the system machine, one a second.
constexpr int kTicksPerRound = 1000;
constexpr int kSilence = 30;             // of both services: restarts of each, and of the package
constexpr std::size_t kHeapSlack = 4096; // of the whole run

/// How many ticks, and what they are in a claim's name.
struct Span
{
    const char* name;
    int ticks;
};

void PrintTo(const Span& span, std::ostream* stream)
{
    *stream << span.name;
}

} // namespace

class TickEndurance : public testing::TestWithParam<Span>
{
protected:
    void SetUp() override
    {
        m_device.supervise(kVistor);
        m_device.supervise(kPictor);
        // The times of all package restarts are kept for ever, 8 bytes each: meant to grow.
        g_restartHistory.reserve(4 * static_cast<std::size_t>(GetParam().ticks) / kTicksPerRound);
    }

    /// A thousand ticks: each kind of trouble once, and the peace between. Ends stable.
    void round()
    {
        m_device.service(kPictor).fail();
        m_device.afterTicks(8);
        m_device.service(kPictor).answer("starting");
        m_device.afterTicks(12);
        m_device.service(kPictor).answer("up");
        m_device.afterTicks(100);
        m_device.service(kVistor).answer("down");
        m_device.afterTicks(10);
        m_device.service(kVistor).answer("up");
        m_device.afterTicks(340);
        m_device.service(kPictor).fail();
        m_device.service(kVistor).fail();
        m_device.afterTicks(kSilence);
        m_device.service(kPictor).answer("up");
        m_device.service(kVistor).answer("up");
        m_device.afterTicks(kTicksPerRound - 8 - 12 - 100 - 10 - 340 - kSilence);
        ASSERT_EQ("SuprStableSystem", m_device.state());
        m_commands = m_device.newCommands();
        m_device.forgetThePast();
    }

    SupervisedDevice m_device{SupervisedDevice::Mode::Field};
    Lines m_commands;
};

TEST_P(TickEndurance, LeavesHeapDescriptorsAndThreadsAsTheyAre)
{
    ASSERT_NO_FATAL_FAILURE(round());
    ASSERT_NO_FATAL_FAILURE(round());
    EXPECT_THAT(m_commands, testing::Contains("/opt/orvo/etc/init.d/30_pictor restart"));
    EXPECT_THAT(m_commands, testing::Contains("/opt/orvo/etc/init.d/40_corvane restart"));
    EXPECT_THAT(m_commands, testing::Contains("/etc/init.d/mf-optware restart"));
    const ProcessFigures before = ProcessFigures::now();
    for (int ticks = 0; ticks < GetParam().ticks; ticks += kTicksPerRound)
    {
        ASSERT_NO_FATAL_FAILURE(round());
    }
    const ProcessFigures after = ProcessFigures::now();
    std::ostringstream figures;
    figures << GetParam().ticks << " ticks: before " << before << "; after " << after;
    std::puts(figures.str().c_str());
    EXPECT_GE(before.heapBytes + kHeapSlack, after.heapBytes);
    EXPECT_EQ(before.descriptors, after.descriptors);
    EXPECT_EQ(before.threads, after.threads);
}

INSTANTIATE_TEST_SUITE_P(Short, TickEndurance, testing::Values(Span{"TwentyThousand", 20000}),
                         [](const auto& span) { return span.param.name; });
INSTANTIATE_TEST_SUITE_P(Long, TickEndurance, testing::Values(Span{"AMillion", 1000000}),
                         [](const auto& span) { return span.param.name; });

} // namespace orvo::test
