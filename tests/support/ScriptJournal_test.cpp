#include "ScriptJournal.h"

#include "ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test
{

TEST(ScriptJournal, TellsTheCallsWithTheirArgumentsInOrder)
{
    ScriptJournal journal;
    journal.install("/opt/orvo/etc/init.d/10_wirl", 0, "note inside");
    journal.install("/box/bin/reboot", 3);

    ChildProcess script({"/opt/orvo/etc/init.d/10_wirl", "stop", "now"});
    ASSERT_TRUE(script.waitForEnd(5000));
    EXPECT_EQ(0, script.exitStatus());
    ChildProcess reboot({"reboot"});
    ASSERT_TRUE(reboot.waitForEnd(5000));
    EXPECT_EQ(3, reboot.exitStatus());

    EXPECT_THAT(journal.calls(), testing::ElementsAre("/opt/orvo/etc/init.d/10_wirl stop now",
                                                      "inside", "/box/bin/reboot"));
}

} // namespace orvo::test
