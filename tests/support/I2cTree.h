#pragma once

#include "EepromImage.h"

#include <filesystem>
#include <string>

namespace orvo::test
{

/// The part of sysfs that libudev reads to find the devices of the I2C subsystem, made of plain
/// files: devices may come, go and change their content at any moment, as on the bus.
///
/// libudev takes it for real at /sys and with SYSTEMD_DEVICE_VERIFY_SYSFS=0, which is what a test
/// in the box has.
///
/// Owns:   everything below the root, from construction (an adapter without devices) to
/// destruction. Errors: throws std::filesystem::filesystem_error when the root cannot be written.
class I2cTree
{
public:
    explicit I2cTree(std::filesystem::path root = "/sys");
    ~I2cTree();
    I2cTree(const I2cTree&) = delete;
    I2cTree& operator=(const I2cTree&) = delete;

    /// Fits an EEPROM that answers with those bytes; name as in "2-0054".
    void fit(const std::string& name, const EepromImage::Bytes& content);
    void fit(const std::string& name, const EepromImage& image) { fit(name, image.bytes()); }

    /// Fits a device without content; driver "" = none bound; parent below the root's "devices".
    void fitDevice(const std::string& name, const std::string& driver = "at24",
                   const std::string& parent = kAdapter);

    /// Replaces what the EEPROM answers; shorter or longer than a record is possible.
    void write(const std::string& name, const std::string& content,
               const std::string& parent = kAdapter);
    void write(const std::string& name, const EepromImage::Bytes& content,
               const std::string& parent = kAdapter);

    /// The file that a driver for EEPROMs offers; it exists once it was written.
    [[nodiscard]] std::filesystem::path eepromFile(const std::string& name,
                                                   const std::string& parent = kAdapter) const;

    /// The device is gone, the bus still lists it: the moment of its removal.
    void vanish(const std::string& name);

    static constexpr const char* kAdapter = "platform/soc/i2c.2/i2c-2";

private:
    void makeLinks(const std::filesystem::path& device, const std::string& driver) const;

    std::filesystem::path m_root;
};

} // namespace orvo::test
