#pragma once

#include <cstddef>
#include <cstdint>

namespace orvo
{

/// Reads the record of an identification EEPROM from the device, anew at every call.
///
/// Units:   bufferSize in bytes; at least kEepromRecordSize, of which exactly that many are
/// written. Threads: main thread, during start-up; blocks for the transfer over the I2C bus.
/// Errors:  false for a short buffer or an unknown EEPROM (the bus is not touched), an EEPROM that
///          is missing or cannot be opened, and a read that gives any other number of bytes (what
///          came is in the buffer then). The content is not judged, nothing is logged.
[[nodiscard]] bool readEeprom(int eepromId, std::uint8_t* buffer, std::size_t bufferSize);

} // namespace orvo
