#include "ActingSupervisor.h"

#include <gtest/gtest.h>

namespace orvo
{

using LongCommand = test::ActingSupervisor;

// A camera's package may take minutes to start; the usual patience of a process class is 30 s.
TEST_F(LongCommand, MayTakeAsLongAsItNeeds)
{
    m_journal.install("/tmp/script", 0, "sleep 31; echo done");
    QString out;
    QString err;
    EXPECT_TRUE(m_action.runCommand(QStringLiteral("/tmp/script"), out, err));
    EXPECT_EQ("done\n", out);
}

} // namespace orvo
