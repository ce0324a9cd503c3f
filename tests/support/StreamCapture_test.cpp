#include "StreamCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace orvo::test
{

TEST(StreamCapture, TakesTextsAsTheyAreWritten)
{
    const StreamCapture output(STDOUT_FILENO);
    std::printf("one");
    EXPECT_EQ("one", output.text());
    std::printf("two\n");
    EXPECT_EQ("onetwo\n", output.text());
}

TEST(StreamCapture, TellsTheStreamsApart)
{
    const StreamCapture output(STDOUT_FILENO);
    const StreamCapture errors(STDERR_FILENO);
    std::fputs("error", stderr);
    EXPECT_EQ("", output.text());
    EXPECT_EQ("error", errors.text());
}

TEST(StreamCapture, PutsTheStreamBack)
{
    const StreamCapture outer(STDOUT_FILENO);
    {
        const StreamCapture inner(STDOUT_FILENO);
        std::printf("inner");
    }
    std::printf("outer");
    EXPECT_EQ("outer", outer.text());
}

} // namespace orvo::test
