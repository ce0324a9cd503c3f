#include "identification/EepromReader.h"

#include "EepromFile.h"
#include "identification/EepromLayout.h"
#include "identification/EepromLocator.h"

#include <string>

namespace orvo
{

bool readEeprom(int eepromId, std::uint8_t* buffer, std::size_t bufferSize)
{
    std::string syspath;
    if (bufferSize < kEepromRecordSize || !locateEeprom(eepromId, syspath))
    {
        return false;
    }
    return EepromFile(syspath + kEepromFile).read(buffer, kEepromRecordSize);
}

} // namespace orvo
