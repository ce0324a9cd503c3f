"""Records of the camera's modules, byte by byte."""

import pytest

from wardex_desk.eeprom import (
    DAMAGES,
    DEVICE_OF_LETTER,
    RECORD_SIZE,
    DescriptionError,
    Record,
    crc8,
    damaged,
)


def test_crc_table_begins_as_the_polynomial_demands():
    # With the start value 0xFF, byte 0xFF ^ i leaves the table's entry i in the register.
    assert [crc8(bytes([0xFF ^ entry])) for entry in range(4)] == [0x00, 0x97, 0xB9, 0x2E]


def test_record_has_every_field_at_its_place():
    image = Record("M", "161", version="03", article="Q90001", revision="AC").image()
    assert len(image) == RECORD_SIZE
    assert image[0:6] == b"#!03 M"
    assert image[6:9] == b"161"
    assert image[98:106] == b"Q90001AC"
    assert image[9:98] == bytes(89)
    assert image[106:127] == bytes(21)
    assert image[127] == crc8(image[:127])


def test_letters_stand_for_the_devices_of_bus_two():
    assert DEVICE_OF_LETTER == {
        "F": "2-0054",
        "D": "2-0052",
        "M": "2-0053",
        "I": "2-0055",
        "A": "2-0050",
    }
    assert Record("F", "351").device == "2-0054"


@pytest.mark.parametrize(
    "fields",
    [
        {"letter": "X", "module": "351"},
        {"letter": "f", "module": "351"},
        {"letter": "F", "module": "35"},
        {"letter": "F", "module": "3511"},
        {"letter": "F", "module": "35\u00e9"},
        {"letter": "F", "module": "351", "version": "2"},
        {"letter": "F", "module": "351", "article": "00000"},
        {"letter": "F", "module": "351", "revision": "A"},
    ],
    ids=lambda fields: "-".join(fields.values()).encode("ascii", "replace").decode(),
)
def test_field_of_the_wrong_size_is_refused(fields):
    with pytest.raises(DescriptionError):
        Record(**fields)


def test_wrong_letter_is_answered_with_the_right_ones():
    with pytest.raises(DescriptionError, match="'X': use one of F D M I A"):
        Record("X", "351")


@pytest.mark.parametrize(
    "kind, first, last, fits",
    [
        ("crc", 127, 127, False),
        ("header", 0, 1, True),
        ("version", 3, 3, True),
        ("letter", 5, 5, True),
    ],
)
def test_damage_spoils_one_thing_only(kind, first, last, fits):
    sound = Record("F", "351").image()
    spoilt = damaged(sound, kind)
    differing = [place for place in range(127) if spoilt[place] != sound[place]]
    assert differing == [place for place in range(first, last + 1) if place != 127]
    assert (spoilt[127] == crc8(spoilt[:127])) is fits


def test_crc_damage_turns_a_single_bit():
    sound = Record("F", "351").image()
    assert sound[127] ^ damaged(sound, "crc")[127] == 0x01


def test_short_and_empty_records_lack_bytes():
    sound = Record("F", "351").image()
    assert damaged(sound, "short") == sound[:127]
    assert damaged(sound, "empty") == b""


def test_unknown_damage_is_answered_with_the_known_kinds():
    with pytest.raises(DescriptionError, match=f"'rust': use one of {' '.join(DAMAGES)}"):
        damaged(Record("F", "351").image(), "rust")
