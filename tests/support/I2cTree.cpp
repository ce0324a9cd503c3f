#include "I2cTree.h"

#include <fstream>
#include <system_error>

namespace orvo::test
{

namespace fs = std::filesystem;

namespace
{
void writeFile(const fs::path& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}
} // namespace

I2cTree::I2cTree(fs::path root) : m_root(std::move(root))
{
    // Outside the box this would be the machine's own sysfs.
    if (!fs::is_empty(m_root))
    {
        throw fs::filesystem_error("I2cTree needs an empty folder", m_root,
                                   std::make_error_code(std::errc::directory_not_empty));
    }
    fs::create_directories(m_root / "bus/i2c/devices");
    fs::create_directories(m_root / "bus/i2c/drivers");
    fs::create_directories(m_root / "class");

    const fs::path adapter = m_root / "devices" / kAdapter;
    fs::create_directories(adapter);
    writeFile(adapter / "uevent", "OF_NAME=i2c\n");
    makeLinks(adapter, "");
}

I2cTree::~I2cTree()
{
    for (const fs::directory_entry& entry : fs::directory_iterator(m_root))
    {
        fs::remove_all(entry.path());
    }
}

void I2cTree::fit(const std::string& name, const EepromImage::Bytes& content)
{
    fitDevice(name);
    write(name, content);
}

void I2cTree::fitDevice(const std::string& name, const std::string& driver,
                        const std::string& parent)
{
    const fs::path device = m_root / "devices" / parent / name;
    fs::create_directories(device);
    writeFile(device / "uevent", "MODALIAS=i2c:24c02\n");
    writeFile(device / "name", "24c02\n");
    makeLinks(device, driver);
}

void I2cTree::write(const std::string& name, const std::string& content, const std::string& parent)
{
    writeFile(eepromFile(name, parent), content);
}

void I2cTree::write(const std::string& name, const EepromImage::Bytes& content,
                    const std::string& parent)
{
    write(name, std::string(content.begin(), content.end()), parent);
}

fs::path I2cTree::eepromFile(const std::string& name, const std::string& parent) const
{
    return m_root / "devices" / parent / name / "eeprom";
}

void I2cTree::vanish(const std::string& name)
{
    fs::remove_all(eepromFile(name).parent_path());
}

void I2cTree::makeLinks(const fs::path& device, const std::string& driver) const
{
    const fs::path bus = m_root / "bus/i2c";
    fs::create_directory_symlink(fs::relative(bus, device), device / "subsystem");
    if (!driver.empty())
    {
        fs::create_directories(bus / "drivers" / driver);
        fs::create_directory_symlink(fs::relative(bus / "drivers" / driver, device),
                                     device / "driver");
    }
    const fs::path listed = bus / "devices" / device.filename();
    fs::remove(listed);
    fs::create_directory_symlink(fs::relative(device, listed.parent_path()), listed);
}

} // namespace orvo::test
