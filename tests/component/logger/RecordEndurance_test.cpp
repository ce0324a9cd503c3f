// Weeks of logging: the logger must not grow.

#include "LogDevice.h"
#include "ProcessFigures.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

namespace orvo::Logger
{

namespace
{

constexpr int kRecordsPerRound = 1000;
constexpr std::size_t kHeapSlack = 4096;

/// How many records, and what they are in a claim's name.
struct Amount
{
    const char* name;
    int records;
};

void PrintTo(const Amount& amount, std::ostream* stream)
{
    *stream << amount.name;
}

} // namespace

class RecordEndurance : public LoggerOnDevice, public testing::WithParamInterface<Amount>
{
protected:
    /// A thousand records of all lengths, some too long, some said once only, some told away, and a
    /// configuration amid them.
    void round(int number)
    {
        for (int i = 0; i < kRecordsPerRound - 1; ++i)
        {
            const std::string text(static_cast<std::size_t>(i) * 7 % 700, 'x');
            ASSERT_LE(0, m_logger.log(WARN, "%d \"%s\"", i, text.c_str()));
            ASSERT_EQ(0, m_logger.log(DEBUG, "%d %s", i, text.c_str()));
            ASSERT_LE(0, m_logger.logOnce(ERROR, "once %d", i % 10));
        }
        // Announced by the thousandth record.
        ASSERT_NO_FATAL_FAILURE(
            configure(R"({"source":"all","mask":248,"max":100,"segvregex":"no)" +
                      std::to_string(number % 10) + "\"}"));
        m_records.clear();
    }
};

TEST_P(RecordEndurance, LeavesHeapDescriptorsAndThreadsAsTheyAre)
{
    for (int number = 0; number < 10; ++number)
    {
        ASSERT_NO_FATAL_FAILURE(round(number));
    }
    const test::ProcessFigures before = test::ProcessFigures::now();
    for (int number = 0; number < GetParam().records / kRecordsPerRound; ++number)
    {
        ASSERT_NO_FATAL_FAILURE(round(number));
    }
    const test::ProcessFigures after = test::ProcessFigures::now();
    std::ostringstream figures;
    figures << GetParam().records << " records: before " << before << "; after " << after;
    std::puts(figures.str().c_str());
    EXPECT_GE(before.heapBytes + kHeapSlack, after.heapBytes);
    EXPECT_EQ(before.descriptors, after.descriptors);
    EXPECT_EQ(before.threads, after.threads);
}

INSTANTIATE_TEST_SUITE_P(Short, RecordEndurance, testing::Values(Amount{"TwentyThousand", 20000}),
                         [](const auto& amount) { return amount.param.name; });
INSTANTIATE_TEST_SUITE_P(Long, RecordEndurance, testing::Values(Amount{"AMillion", 1000000}),
                         [](const auto& amount) { return amount.param.name; });

} // namespace orvo::Logger
