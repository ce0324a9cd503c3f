"""The words of ./run do."""

import pytest

from wardex_desk import deeds
from wardex_desk.deeds import WrongWords


class Noted:
    """Controls that only write down what is asked of them."""

    def __init__(self):
        self.calls = []

    def __getattr__(self, name):
        return lambda *arguments: self.calls.append((name, *arguments))


def calls_of(words):
    noted = Noted()
    deeds.deed(words.split()).perform(noted)
    return noted.calls


@pytest.mark.parametrize(
    "words, call",
    [
        ("pictor hang", ("order", "pictor", "hang")),
        ("pictor up", ("order", "pictor", "up")),
        ("corvane starting", ("order", "corvane", "starting")),
        ("vistor down", ("order", "corvane", "down")),
        ("wirl crash", ("order", "wirl", "crash")),
        ("wirl error", ("order", "wirl", "error")),
        ("pictor delay 1500", ("order", "pictor", "delay 1500")),
        ("pictor delay 1500 starting", ("order", "pictor", "delay 1500 starting")),
        ("pictor garbage", ("order", "pictor", "garbage")),
        ("pictor garbage struct", ("order", "pictor", "garbage struct")),
        ("quorl short", ("order", "quorl", "short")),
        ("redis stop", ("redis", "stop", ("redis-cache", "redis-store"))),
        ("redis restart cache", ("redis", "restart", ("redis-cache",))),
        ("redis hang store", ("redis", "hang", ("redis-store",))),
        ("bus stop", ("bus", "stop")),
        ("developer on", ("developer", True)),
        ("developer off", ("developer", False)),
        ("eeprom F damage", ("damage_eeprom", "F", "crc")),
        ("eeprom M damage gone", ("damage_eeprom", "M", "gone")),
        ("script 30_pictor.restart delay 3000", ("knob", "30_pictor", "restart", "delay 3000")),
        ("script mf-optware.restart fail 1", ("knob", "mf-optware", "restart", "fail 1")),
        ("script 30_pictor.restart ok", ("knob", "30_pictor", "restart")),
        ("supervisor kill", ("supervisor", "kill")),
        ("supervisor stop", ("supervisor", "stop")),
        ("supervisor continue", ("supervisor", "continue")),
        ("reboot", ("reboot",)),
    ],
    ids=lambda value: value.replace(" ", "-") if isinstance(value, str) else "",
)
def test_words_ask_for(words, call):
    assert calls_of(words) == [call]


def test_eeprom_words_write_a_record():
    [(name, record)] = calls_of("eeprom F 351")
    assert (name, record.letter, record.module, record.version) == (
        "write_eeprom",
        "F",
        "351",
        "02",
    )


@pytest.mark.parametrize(
    "words, complaint",
    [
        (
            "",
            "do what? Say one of: corvane, pictor, wirl, quorl, redis, bus, supervisor, "
            "developer, eeprom, script, reboot",
        ),
        (
            "pictr",
            "'pictr' is not known after 'do': say one of corvane, pictor, wirl, quorl, "
            "redis, bus, supervisor, developer, eeprom, script, reboot",
        ),
        (
            "pictor",
            "a word is missing after 'pictor': say one of up, starting, down, delay, "
            "error, hang, crash, garbage",
        ),
        (
            "pictor hand",
            "'hand' is not known after 'pictor': say one of up, starting, down, "
            "delay, error, hang, crash, garbage",
        ),
        ("pictor hang now", "'now' is one word too many"),
        ("pictor delay", "after 'delay' comes a number from 0 to 3600000 (milliseconds)"),
        ("pictor delay 3600001", "after 'delay' comes a number from 0 to 3600000 (milliseconds)"),
        ("pictor delay -1", "after 'delay' comes a number from 0 to 3600000 (milliseconds)"),
        (
            "pictor delay 5 high",
            "'high' is not known after 'delay 5': say one of up, starting, " "down",
        ),
        (
            "pictor garbage bag",
            "'bag' is not known after 'garbage': say one of none, one, three, "
            "int, variant, swap, struct, huge, giant",
        ),
        (
            "quorl crash",
            "'crash' is not known after 'quorl': say one of up, hang, empty, short, " "down",
        ),
        (
            "redis kill",
            "'kill' is not known after 'redis': say one of stop, start, restart, " "hang, continue",
        ),
        ("redis stop all", "'all' is not known after 'redis stop': say one of cache, store"),
        ("bus", "a word is missing after 'bus': say one of stop, start, restart, hang, continue"),
        ("supervisor start now", "'now' is one word too many"),
        (
            "supervisor feed",
            "'feed' is not known after 'supervisor': say one of kill, stop, " "continue, start",
        ),
        ("developer yes", "'yes' is not known after 'developer': say one of on, off"),
        ("eeprom X 351", "'X' is not known after 'eeprom': say one of F, D, M, I, A"),
        (
            "eeprom F",
            "after 'eeprom F' comes a type code of three characters, such as 351, or "
            "'damage' and one of crc, header, version, letter, short, empty, gone",
        ),
        (
            "eeprom F 3511",
            "after 'eeprom F' comes a type code of three characters, such as 351, "
            "or 'damage' and one of crc, header, version, letter, short, empty, gone",
        ),
        (
            "eeprom F damage rust",
            "'rust' is not known after 'damage': say one of crc, header, "
            "version, letter, short, empty, gone",
        ),
        (
            "script 30_pictor.restart",
            "a word is missing after '30_pictor.restart': say one of " "delay, fail, ok",
        ),
        (
            "script 30_pictor.restart fail 256",
            "after 'fail' comes a number from 0 to 255 (exit " "status)",
        ),
        ("reboot now", "'now' is one word too many"),
    ],
    ids=lambda value: value.replace(" ", "-")[:24],
)
def test_wrong_words_are_answered_with_the_right_ones(words, complaint):
    with pytest.raises(WrongWords) as caught:
        deeds.deed(words.split())
    assert str(caught.value) == complaint


def test_wrong_script_is_answered_with_every_call():
    with pytest.raises(WrongWords) as caught:
        deeds.deed(["script", "30_pictor"])
    for call in ("40_corvane.start", "30_pictor.restart", "20_quorl.stop", "mf-optware.restart"):
        assert call in str(caught.value)


@pytest.mark.parametrize("highest", ["pictor delay 3600000", "script 10_wirl.stop fail 255"])
def test_highest_numbers_are_taken(highest):
    assert len(calls_of(highest)) == 1


def test_person_is_told_when_a_change_waits_for_the_next_start():
    for words in ("developer on", "eeprom F 351", "eeprom F damage"):
        assert "looks when it starts: ./run do reboot" in deeds.deed(words.split()).done
