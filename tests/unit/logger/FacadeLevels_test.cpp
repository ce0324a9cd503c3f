#include "FacadeLevels.h"

#include "logger/RedisLogger.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <syslog.h>

namespace orvo::Logger
{

struct FacadeRow
{
    std::string name;
    int index;
    std::uint32_t level;
    int priority;
};

class FacadeLevelRow : public testing::TestWithParam<FacadeRow>
{
};

TEST_P(FacadeLevelRow, StandsForALevelAndAPriority)
{
    const FacadeLevel* level = facadeLevel(GetParam().index);
    ASSERT_NE(nullptr, level);
    EXPECT_EQ(GetParam().level, level->level);
    EXPECT_EQ(GetParam().priority, level->syslogPriority);
}

INSTANTIATE_TEST_SUITE_P(
    Index, FacadeLevelRow,
    testing::Values(FacadeRow{"Debug", 0, DEBUG, LOG_DEBUG}, FacadeRow{"Info", 1, INFO, LOG_INFO},
                    FacadeRow{"Trace", 2, TRACE, LOG_NOTICE},
                    FacadeRow{"Warn", 3, WARN, LOG_WARNING}, FacadeRow{"Error", 4, ERROR, LOG_ERR},
                    FacadeRow{"Fatal", 5, FATAL, LOG_CRIT},
                    FacadeRow{"Emerg", 6, EMERG, LOG_EMERG}),
    [](const testing::TestParamInfo<FacadeRow>& row) { return row.param.name; });

TEST(FacadeLevels, HasNothingForWhatIsNoIndex)
{
    EXPECT_EQ(nullptr, facadeLevel(-1));
    EXPECT_EQ(nullptr, facadeLevel(7));
    EXPECT_EQ(nullptr, facadeLevel(INT_MIN));
    EXPECT_EQ(nullptr, facadeLevel(INT_MAX));
}

} // namespace orvo::Logger
