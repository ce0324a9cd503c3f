"""An emulated board of the device's kind, with the installed product on it: see ../../board --help.

The board is real where the simulated device of the desk only imitates: a 32-bit ARM kernel, EEPROMs
on an I2C bus, a watchdog that resets, and a reboot that starts everything anew.
"""
