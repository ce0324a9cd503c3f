#include "ChildProcess.h"
#include "Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test
{

using testing::ElementsAre;

namespace
{
/// umockdev's preload answers the ioctls on everything below /dev by itself, through the socket
/// ioctl/_default of its folder; without that socket they reach the kernel, and so the guard. A
/// preload comes before the address sanitizer's library, which says no to that unless told.
constexpr char kWithoutItsIoctls[] =
    "rm \"$UMOCKDEV_DIR/ioctl/_default\" && ASAN_OPTIONS=verify_asan_link_order=0 exec \"$@\"";
constexpr char kDevice[] = "/dev/watchdog";
constexpr char kOutput[] = "/tmp/output";
constexpr char kJournal[] = "/tmp/journal";

std::vector<std::string> joined(const std::vector<std::vector<std::string>>& parts)
{
    std::vector<std::string> all;
    for (const auto& part : parts)
    {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}
} // namespace

/// The device's own watchdog node, in a place where device trees are mocked by a preload.
class GuardBelowUmockdev : public testing::Test
{
protected:
    const std::vector<std::string> m_umockdev = {"umockdev-run",    "--", "sh", "-c",
                                                 kWithoutItsIoctls, "sh"};
    const std::vector<std::string> m_guard = {peer("watchdog-guard"),
                                              "--device",
                                              kDevice,
                                              "--timeout-ms",
                                              "200",
                                              "--journal",
                                              kJournal,
                                              "--"};
    const std::vector<std::string> m_user = {peer("watchdog-user"), "open", kDevice, "gettimeout",
                                             "feed"};

    static void run(const std::vector<std::string>& command)
    {
        ChildProcess guard(command, kOutput);
        ASSERT_TRUE(guard.waitForEnd(20000));
        EXPECT_EQ(70, guard.exitStatus());
        EXPECT_THAT(linesOf(kOutput), ElementsAre("open 0", "gettimeout 1", "feed 0"));
        EXPECT_THAT(journalOf(kJournal),
                    ElementsAre("open", "gettimeout", "feed 1", "close", "exit 0", "reset"));
    }
};

TEST_F(GuardBelowUmockdev, AnswersWhenOnlyTheProgramIsPreloaded)
{
    run(joined({m_guard, m_umockdev, m_user}));
}

TEST_F(GuardBelowUmockdev, AnswersWhenItIsPreloadedItself)
{
    run(joined({m_umockdev, m_guard, m_user}));
}

} // namespace orvo::test
