"""The kernel in the form in which the board starts soonest, and its device tree.

Debian's kernel unpacks itself, which costs the emulated processor eight seconds. Here it is
unpacked on this machine and wrapped in the boot loader's header, uncompressed.
"""

import lzma
import shutil
import struct
import subprocess
import zlib
from pathlib import Path

XZ_MAGIC = b"\xfd7zXZ\0"
UIMAGE_MAGIC = 0x27051956
# The board's memory begins at 0x80000000; the kernel wants to be 0x8000 above a multiple of 2 MiB.
LOAD_ADDRESS = 0x80208000
OS_LINUX, ARCH_ARM, TYPE_KERNEL, UNCOMPRESSED = 5, 2, 2, 0
NAME_SIZE = 32

I2C_BUS = "/soc/bus@2100000/i2c@21a8000"
# At these addresses of I2C bus 2 modules have their EEPROM; the last is the board's own notebook,
# which no module uses.
NOTEBOOK = 0x56
ADDRESSES = (0x50, 0x52, 0x53, 0x54, 0x55, NOTEBOOK)
EEPROM_BYTES = 128


class ImageError(Exception):
    """A part of the board that cannot be made; the message names it."""


def unpacked(packed: bytes) -> bytes:
    """The kernel inside a self-extracting one."""
    begin = packed.find(XZ_MAGIC)
    while begin >= 0:
        # The unpacking code has the magic bytes in it, too.
        try:
            return lzma.LZMADecompressor(lzma.FORMAT_XZ).decompress(packed[begin:])
        except lzma.LZMAError:
            begin = packed.find(XZ_MAGIC, begin + 1)
    raise ImageError("Debian's kernel is not packed with xz any more: nothing to unpack")


def wrapped(kernel: bytes) -> bytes:
    """A kernel behind the header that says where to put it and where it begins."""

    def header(checksum: int) -> bytes:
        return struct.pack(
            f">7I4B{NAME_SIZE}s",
            *(UIMAGE_MAGIC, checksum, 0, len(kernel), LOAD_ADDRESS, LOAD_ADDRESS),
            zlib.crc32(kernel),
            *(OS_LINUX, ARCH_ARM, TYPE_KERNEL, UNCOMPRESSED),
            b"wardex board",
        )

    return header(zlib.crc32(header(0))) + kernel


def make_device_tree(source: Path, target: Path) -> None:
    """The evaluation board's tree with I2C bus 2 enabled and an EEPROM at each of the addresses.

    The emulated EEPROMs take two address bytes, which a 24c02 of a real module does not.
    """
    shutil.copyfile(source, target)
    _put(target, I2C_BUS, "status", "-ts", "okay")
    for address in ADDRESSES:
        node = f"{I2C_BUS}/eeprom@{address:x}"
        _run("fdtput", "-c", str(target), node)
        _put(target, node, "compatible", "-ts", "atmel,24c04")
        _put(target, node, "reg", "-tx", f"{address:x}")
        _put(target, node, "size", "-tu", str(EEPROM_BYTES))
        _put(target, node, "address-width", "-tu", "16")


def _put(target: Path, node: str, name: str, kind: str, value: str) -> None:
    _run("fdtput", kind, str(target), node, name, value)


def _run(*words: str) -> None:
    done = subprocess.run(words, capture_output=True, text=True)
    if done.returncode != 0:
        raise ImageError(f"{' '.join(words)}: {done.stderr.strip()}")
