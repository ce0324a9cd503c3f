#include "OwnProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

namespace orvo::test
{

void inOwnProcess(const std::function<void()>& claim)
{
    std::fflush(nullptr);
    const pid_t pid = fork();
    ASSERT_NE(-1, pid);
    if (pid == 0)
    {
        claim();
        std::exit(testing::Test::HasFailure() ? 1 : 0); // NOLINT(concurrency-mt-unsafe)
    }
    int status = 0;
    ASSERT_EQ(pid, waitpid(pid, &status, 0));
    EXPECT_EQ(0, status) << "the claim failed in its own process, see above";
}

} // namespace orvo::test
