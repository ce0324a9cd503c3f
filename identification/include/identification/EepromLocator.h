#pragma once

#include <string>

namespace orvo
{

/// How the kernel names an I2C device of the identification bus, as a printf format with one %d for
/// the device number. Points at kI2cDeviceName; a board with its EEPROMs on another bus replaces it
/// before the first query.
///
/// Borrows: the text, for as long as EEPROMs are looked up.
/// Threads: main thread; it is read at every look-up.
extern const char* g_i2cDeviceNameFormat;

/// Finds the sysfs folder of an identification EEPROM through udev.
///
/// Of several devices that are bound to at24 and carry the name in their path, the first in udev's
/// order is taken. Nothing is cached: every call asks udev again.
///
/// Threads: main thread, during start-up.
/// Errors:  false for an unknown EEPROM (without asking udev), when udev cannot be had, and when no
///          device matches; syspath stays untouched then. Nothing is logged.
[[nodiscard]] bool locateEeprom(int eepromId, std::string& syspath);

} // namespace orvo
