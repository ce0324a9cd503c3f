#include "ChildProcess.h"

#include "Eventually.h"

#include <gtest/gtest.h>

#include <csignal>

namespace orvo::test
{

TEST(ChildProcess, TellsTheExitStatusOfAProcessThatEnded)
{
    ChildProcess process({"sh", "-c", "exit 3"});
    ASSERT_TRUE(process.waitForEnd(5000));
    EXPECT_EQ(3, process.exitStatus());
}

TEST(ChildProcess, TellsTheSignalThatEndedIt)
{
    ChildProcess process({"sleep", "60"});
    process.signal(SIGTERM);
    ASSERT_TRUE(process.waitForEnd(5000));
    EXPECT_EQ(128 + SIGTERM, process.exitStatus());
}

TEST(ChildProcess, EndsWithItsOwner)
{
    pid_t pid = -1;
    {
        ChildProcess process({"sleep", "60"});
        pid = process.pid();
        ASSERT_EQ(0, kill(pid, 0));
    }
    EXPECT_EQ(-1, kill(pid, 0));
}

TEST(ChildProcess, ExitsWith127WhenTheProgramCannotBeExecuted)
{
    ChildProcess process({"/nonexistent/program"});
    ASSERT_TRUE(process.waitForEnd(5000));
    EXPECT_EQ(127, process.exitStatus());
}

TEST(Eventually, AnswersFalseWhenTheConditionNeverHolds)
{
    EXPECT_FALSE(eventually([] { return false; }, 20));
}

} // namespace orvo::test
