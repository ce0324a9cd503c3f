#include "DeveloperMode.h"

#include "Box.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace orvo
{

namespace
{

constexpr const char kMarker[] = "/etc/mirrorfin_develop";
constexpr const char kPersistentMarker[] = "/etc/sysdata/mirrorfin_develop";

class DeveloperMode : public testing::Test
{
protected:
    void SetUp() override { test::requireBox(); }
    void TearDown() override
    {
        std::filesystem::remove(kMarker);
        std::filesystem::remove(kPersistentMarker);
    }
};

void put(const char* path, const std::string& content)
{
    std::ofstream(path) << content;
}

} // namespace

TEST_F(DeveloperMode, IsOffWithoutAMarker)
{
    EXPECT_FALSE(isDeveloperDevice());
}

TEST_F(DeveloperMode, IsOnWithAnEmptyMarker)
{
    put(kMarker, "");
    EXPECT_TRUE(isDeveloperDevice());
}

TEST_F(DeveloperMode, IsOnWhateverTheMarkerContains)
{
    put(kMarker, std::string("off\0\xff", 5));
    EXPECT_TRUE(isDeveloperDevice());
}

TEST_F(DeveloperMode, IsOnWithThePersistentMarkerAlone)
{
    put(kPersistentMarker, "");
    EXPECT_TRUE(isDeveloperDevice());
}

TEST_F(DeveloperMode, IsOnWithBothMarkers)
{
    put(kMarker, "");
    put(kPersistentMarker, "");
    EXPECT_TRUE(isDeveloperDevice());
}

TEST_F(DeveloperMode, IsOffWithAMarkerThatLeadsNowhere)
{
    std::filesystem::create_symlink("/etc/nothing", kMarker);
    EXPECT_FALSE(isDeveloperDevice());
}

TEST_F(DeveloperMode, IsFoundOutWithoutWaitingForAWriterOfTheMarker)
{
    ASSERT_EQ(0, mkfifo(kMarker, 0600));
    EXPECT_TRUE(isDeveloperDevice());
}

} // namespace orvo
