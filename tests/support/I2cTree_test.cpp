#include "I2cTree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace orvo::test
{

namespace fs = std::filesystem;

class I2cTreeOnDisk : public testing::Test
{
protected:
    I2cTreeOnDisk()
    {
        std::string folder = (fs::temp_directory_path() / "i2c-XXXXXX").string();
        m_root = mkdtemp(folder.data());
    }
    ~I2cTreeOnDisk() override { fs::remove_all(m_root); }

    fs::path m_root;
};

TEST_F(I2cTreeOnDisk, ListsAFittedEepromOnTheBusWithItsDriverAndContent)
{
    I2cTree tree(m_root);
    const EepromImage image('F', "341");
    tree.fit("2-0054", image);

    const fs::path listed = m_root / "bus/i2c/devices/2-0054";
    EXPECT_EQ("at24", fs::canonical(listed / "driver").filename());
    EXPECT_EQ("i2c", fs::canonical(listed / "subsystem").filename());
    EXPECT_TRUE(fs::exists(listed / "uevent"));
    std::ifstream file(listed / "eeprom", std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const EepromImage::Bytes bytes = image.bytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), content);
}

TEST_F(I2cTreeOnDisk, StillListsADeviceThatVanished)
{
    I2cTree tree(m_root);
    tree.fit("2-0054", EepromImage('F', "341"));
    tree.vanish("2-0054");

    EXPECT_TRUE(fs::is_symlink(m_root / "bus/i2c/devices/2-0054"));
    EXPECT_FALSE(fs::exists(m_root / "bus/i2c/devices/2-0054"));
}

TEST_F(I2cTreeOnDisk, RefusesAFolderThatBelongsToSomebodyElse)
{
    const fs::path kernel = m_root / "kernel";
    fs::create_directory(kernel);
    EXPECT_THROW(I2cTree tree(m_root), fs::filesystem_error);
    EXPECT_TRUE(fs::exists(kernel));
}

TEST_F(I2cTreeOnDisk, LeavesNothingBehind)
{
    {
        I2cTree tree(m_root);
        tree.fitDevice("2-0054", "");
        EXPECT_FALSE(fs::exists(m_root / "bus/i2c/devices/2-0054/driver"));
    }
    EXPECT_TRUE(fs::is_empty(m_root));
}

} // namespace orvo::test
