#include "logger/RedisLogger.h"

#include "LogRecords.h"
#include "RedisServer.h"
#include "logger/LogDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace orvo::Logger
{

class RedisLoggerTest : public testing::Test
{
protected:
    test::RedisServer cache{kLogSocket};
    test::LogRecords records;
    RedisLogger logger{"wardex", kLogSocket, kLogList, false};
};

using ALogger = RedisLoggerTest;

TEST_F(ALogger, WritesNothingBelowWarnByDefault)
{
    EXPECT_EQ(0, logger.log(DEBUG | DIAG | TRACE | INFO, "unheard"));
    EXPECT_THAT(records.raw(), IsEmpty());
}

TEST_F(ALogger, WritesARecordOfEachDefaultLevel)
{
    EXPECT_EQ(5, logger.log(WARN, "%s %d", "one", 1));
    EXPECT_EQ(3, logger.log(ERROR, "two"));
    EXPECT_EQ(5, logger.log(FATAL, "three"));
    EXPECT_EQ(4, logger.log(EMERG, "four"));
    const auto all = records.all();
    ASSERT_EQ(4U, all.size());
    EXPECT_THAT(records.messages("WARN"), ElementsAre("one 1"));
    EXPECT_THAT(records.messages("ERROR"), ElementsAre("two"));
    EXPECT_THAT(records.messages("FATAL"), ElementsAre("three"));
    EXPECT_THAT(records.messages("EMERG"), ElementsAre("four"));
    EXPECT_EQ("wardex", all[0].source);
    EXPECT_EQ(std::to_string(getpid()), all[0].pid);
}

} // namespace orvo::Logger
