#include "identification/EepromReader.h"

#include "FileDescriptor.h"
#include "identification/EepromLayout.h"
#include "identification/EepromLocator.h"

#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace orvo
{

bool readEeprom(int eepromId, std::uint8_t* buffer, std::size_t bufferSize)
{
    std::string path;
    if (bufferSize < kEepromRecordSize || !locateEeprom(eepromId, path))
    {
        return false;
    }
    path += kEepromFile;
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
    {
        return false;
    }
    return read(file.get(), buffer, kEepromRecordSize) == static_cast<ssize_t>(kEepromRecordSize);
}

} // namespace orvo
