"""Identification records of the camera's modules, built from readable descriptions.

Shape: 128 bytes; '#!', two digits of version, the record letter at 5, the module's type code at
6..8, the article number at 98..103 and its revision at 104..105, CRC-8 of the rest at 127.
"""

from dataclasses import dataclass
from typing import Callable, Mapping

RECORD_SIZE = 128
CRC_POLYNOMIAL = 0x97
CRC_START = 0xFF

# Record letter -> device on I2C bus 2.
DEVICE_OF_LETTER: Mapping[str, str] = {
    "F": "2-0054",
    "D": "2-0052",
    "M": "2-0053",
    "I": "2-0055",
    "A": "2-0050",
}


class DescriptionError(ValueError):
    """A record that cannot be built; the message names the field and what would be right."""


def crc8(data: bytes) -> int:
    """CRC-8 of the records: polynomial 0x97, most significant bit first, start 0xFF."""
    register = CRC_START
    for byte in data:
        register ^= byte
        for _ in range(8):
            shifted = (register << 1) & 0xFF
            register = shifted ^ CRC_POLYNOMIAL if register & 0x80 else shifted
    return register


@dataclass(frozen=True)
class Record:
    """What one module says about itself. All texts are ASCII."""

    letter: str
    module: str
    version: str = "02"
    article: str = "000000"
    revision: str = "AA"

    def __post_init__(self) -> None:
        if self.letter not in DEVICE_OF_LETTER:
            raise DescriptionError(
                f"no EEPROM has the letter '{self.letter}': use one of {' '.join(DEVICE_OF_LETTER)}"
            )
        for field, length in (("module", 3), ("version", 2), ("article", 6), ("revision", 2)):
            value = getattr(self, field)
            if len(value) != length or not value.isascii():
                raise DescriptionError(
                    f"{field} of record {self.letter} is '{value}': it must have {length} characters"
                )

    @property
    def device(self) -> str:
        """Name of the EEPROM's device on the I2C bus, such as 2-0054."""
        return DEVICE_OF_LETTER[self.letter]

    def image(self) -> bytes:
        """The 128 bytes as the module's maker wrote them."""
        body = bytearray(RECORD_SIZE - 1)
        body[0:2] = b"#!"
        body[2:4] = self.version.encode()
        body[4:5] = b" "
        body[5:6] = self.letter.encode()
        body[6:9] = self.module.encode()
        body[98:104] = self.article.encode()
        body[104:106] = self.revision.encode()
        return bytes(body) + bytes([crc8(body)])


def _resealed(image: bytes, offset: int, replacement: bytes) -> bytes:
    """Other bytes under a checksum that fits them."""
    body = image[:offset] + replacement + image[offset + len(replacement) : RECORD_SIZE - 1]
    return body + bytes([crc8(body)])


# Each kind spoils exactly one thing, so that the reader's checks can be told apart.
DAMAGES: Mapping[str, Callable[[bytes], bytes]] = {
    "crc": lambda image: image[:-1] + bytes([image[-1] ^ 0x01]),
    "header": lambda image: _resealed(image, 0, b"!#"),
    "version": lambda image: _resealed(image, 2, b"04"),
    "letter": lambda image: _resealed(image, 5, b"?"),
    "short": lambda image: image[: RECORD_SIZE - 1],
    "empty": lambda image: b"",
}


def damaged(image: bytes, kind: str) -> bytes:
    """The image with one kind of damage; an unknown kind is a DescriptionError."""
    if kind not in DAMAGES:
        raise DescriptionError(f"no damage is called '{kind}': use one of {' '.join(DAMAGES)}")
    return DAMAGES[kind](image)
