#pragma once

#include <cstdint>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace orvo
{

/// The file in which the EEPROM driver offers its content; open from construction to destruction.
class EepromFile
{
public:
    /// Opens the file for reading; one that cannot be opened just reads nothing.
    explicit EepromFile(const std::string& path)
        : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
    }
    ~EepromFile()
    {
        if (m_descriptor >= 0)
        {
            (void)close(m_descriptor);
        }
    }
    EepromFile(const EepromFile&) = delete;
    EepromFile& operator=(const EepromFile&) = delete;

    /// True when exactly that many bytes came in one read.
    [[nodiscard]] bool read(std::uint8_t* buffer, std::size_t size) const
    {
        return ::read(m_descriptor, buffer, size) == static_cast<ssize_t>(size);
    }

private:
    int m_descriptor;
};

} // namespace orvo
