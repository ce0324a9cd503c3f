#include "Watchdog.h"

#include "DevicePaths.h"
#include "OwnProcess.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

struct DriverCall
{
    int descriptor;
    unsigned long request;
    bool hasArgument;
};

std::vector<DriverCall> g_driverCalls;
int g_driverAnswer = 0;

} // namespace

// The driver: the device's kernel has one, a desk has not.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    g_driverCalls.push_back({descriptor, request, va_arg(arguments, void*) != nullptr});
    va_end(arguments);
    return g_driverAnswer;
}

namespace orvo
{

namespace
{

using test::inOwnProcess;

constexpr unsigned long kGetTimeOut = 0x80045707;
constexpr unsigned long kKeepAlive = 0x80045705;

/// The descriptor under which this process has the node open; -1 when it has not.
int watchdogDescriptor()
{
    struct stat node = {};
    stat(kWatchdogNode, &node);
    for (int descriptor = 0; descriptor < 64; ++descriptor)
    {
        struct stat open = {};
        if (fstat(descriptor, &open) == 0 && open.st_dev == node.st_dev &&
            open.st_ino == node.st_ino)
        {
            return descriptor;
        }
    }
    return -1;
}

/// While it lives, no further file can be opened.
class NoFurtherFile
{
public:
    NoFurtherFile()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoFurtherFile() { setrlimit(RLIMIT_NOFILE, &m_before); }
    NoFurtherFile(const NoFurtherFile&) = delete;
    NoFurtherFile& operator=(const NoFurtherFile&) = delete;

private:
    rlimit m_before{};
};

} // namespace

TEST(Watchdog, IsNotOpenedBeforeItIsAskedFor)
{
    inOwnProcess([] { EXPECT_EQ(-1, watchdogDescriptor()); });
}

TEST(Watchdog, OpensTheNodeForReadingAndWriting)
{
    inOwnProcess(
        []
        {
            Watchdog::instance();
            EXPECT_EQ(O_RDWR, fcntl(watchdogDescriptor(), F_GETFL) & O_ACCMODE);
        });
}

TEST(Watchdog, KeepsTheNodeFromTheServicesThatAreStarted)
{
    inOwnProcess(
        []
        {
            Watchdog::instance();
            EXPECT_EQ(FD_CLOEXEC, fcntl(watchdogDescriptor(), F_GETFD));
        });
}

TEST(Watchdog, ReadsTheCountdownOnceAndNeverSetsIt)
{
    inOwnProcess(
        []
        {
            Watchdog::instance();
            ASSERT_EQ(1U, g_driverCalls.size());
            EXPECT_EQ(watchdogDescriptor(), g_driverCalls[0].descriptor);
            EXPECT_EQ(kGetTimeOut, g_driverCalls[0].request);
            EXPECT_TRUE(g_driverCalls[0].hasArgument);

            Watchdog::instance().feed();
            ASSERT_EQ(2U, g_driverCalls.size());
            EXPECT_EQ(kKeepAlive, g_driverCalls[1].request);
        });
}

TEST(Watchdog, IsFedByOneKeepAliveWithoutAnArgument)
{
    inOwnProcess(
        []
        {
            Watchdog& watchdog = Watchdog::instance();
            g_driverCalls.clear();
            EXPECT_TRUE(watchdog.feed());
            ASSERT_EQ(1U, g_driverCalls.size());
            EXPECT_EQ(watchdogDescriptor(), g_driverCalls[0].descriptor);
            EXPECT_EQ(kKeepAlive, g_driverCalls[0].request);
            EXPECT_FALSE(g_driverCalls[0].hasArgument);
        });
}

TEST(Watchdog, CountsAsFedWhateverTheDriverAnswers)
{
    inOwnProcess(
        []
        {
            Watchdog& watchdog = Watchdog::instance();
            for (const int answer : {-1, 0, 1})
            {
                g_driverAnswer = answer;
                EXPECT_TRUE(watchdog.feed()) << answer;
            }
        });
}

TEST(Watchdog, IsOneForTheWholeProcess)
{
    inOwnProcess(
        []
        {
            EXPECT_EQ(&Watchdog::instance(), &Watchdog::instance());
            EXPECT_EQ(1U, g_driverCalls.size());
        });
}

TEST(Watchdog, CannotBeFedWhenTheNodeCouldNotBeOpened)
{
    inOwnProcess(
        []
        {
            {
                const NoFurtherFile limit;
                Watchdog::instance();
            }
            Watchdog& watchdog = Watchdog::instance();
            ASSERT_EQ(1U, g_driverCalls.size());
            EXPECT_EQ(-1, g_driverCalls[0].descriptor);
            EXPECT_FALSE(watchdog.feed());
            EXPECT_FALSE(watchdog.feed());
            EXPECT_EQ(1U, g_driverCalls.size()) << "nothing to feed, nothing to tell the driver";
        });
}

TEST(Watchdog, WritesNothingToTheNodeBeforeItCloses)
{
    inOwnProcess([] { Watchdog::instance().feed(); });
    EXPECT_EQ(0U, std::filesystem::file_size(kWatchdogNode));
}

} // namespace orvo
