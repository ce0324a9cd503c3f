#include "Eventually.h"
#include "ProcessFigures.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <sstream>
#include <thread>

#include <unistd.h>

namespace orvo::test
{

TEST(ProcessFigures, CountsWhatIsAllocated)
{
    const std::size_t before = ProcessFigures::now().heapBytes;
    if (before == 0)
    {
        GTEST_SKIP() << "a sanitizer allocates here";
    }
    const auto small = std::make_unique<char[]>(1000);
    const auto large = std::make_unique<char[]>(1000000);
    const std::size_t after = ProcessFigures::now().heapBytes;
    EXPECT_LE(before + 1001000, after);
    EXPECT_GE(before + 1010000, after);
}

TEST(ProcessFigures, CountsDescriptors)
{
    const std::size_t before = ProcessFigures::now().descriptors;
    const int descriptor = dup(STDOUT_FILENO);
    EXPECT_EQ(before + 1, ProcessFigures::now().descriptors);
    close(descriptor);
    EXPECT_EQ(before, ProcessFigures::now().descriptors);
}

TEST(ProcessFigures, CountsThreads)
{
    std::promise<void> isOver;
    std::thread thread([&] { isOver.get_future().wait(); });
    // A sanitizer has started one of its own with it.
    const std::size_t with = ProcessFigures::now().threads;
    EXPECT_LE(2U, with);
    isOver.set_value();
    thread.join();
    EXPECT_TRUE(eventually([&] { return ProcessFigures::now().threads == with - 1; }));
}

TEST(ProcessFigures, TellsAllThree)
{
    std::ostringstream told;
    told << ProcessFigures{1, 2, 3};
    EXPECT_EQ("1 bytes of heap, 2 descriptors, 3 threads", told.str());
}

} // namespace orvo::test
