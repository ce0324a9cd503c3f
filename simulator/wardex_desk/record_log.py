"""The device's log records for a person: ./run logs."""

import json
import subprocess
from dataclasses import dataclass
from typing import Iterator, Optional, TextIO

from wardex_desk import control
from wardex_desk.control import ControlError
from wardex_desk.instance import Instance
from wardex_desk.places import READER
from wardex_desk.shell import entering
from wardex_desk.sources_parse import RECORD_STAMP_STEP_S, ParseError, read_record
from wardex_desk.waiting import pause

STEP = 0.1
# How record-reader ends: it was given wrong words, there is no Redis to ask.
REFUSED = 64
NO_REDIS = 69
COLOURS = {
    "WARN": "33",
    "ERROR": "31",
    "FATAL": "1;31",
    "EMERG": "1;31",
    "TRACE": "2",
    "DEBUG": "2",
}


@dataclass(frozen=True)
class Wanted:
    """Which records: of `level` and worse, with `text` in the message; empty: any."""

    follow: bool = False
    level: str = ""
    text: str = ""

    def words(self) -> list[str]:
        """The words of record-reader for it."""
        words = [READER]
        words += ["-f"] if self.follow else []
        words += ["--level", self.level] if self.level else []
        words += ["-g", self.text] if self.text else []
        return words


def readable(raw: str, colour: bool) -> str:
    """One line for one record; "..." ends one that was cut, a text that is no record comes as it is."""
    try:
        record = read_record(raw)
    except ParseError:
        return f"?? {_harmless(raw)}"
    time = f"{record.at - RECORD_STAMP_STEP_S:.4f}"
    end = "" if record.whole else "..."
    line = f"{time:>12} {record.level:<5} {record.source}[{record.pid}] {record.text}{end}"
    shade = COLOURS.get(record.level)
    line = _harmless(line)
    return f"\033[{shade}m{line}\033[0m" if colour and shade else line


def _harmless(text: str) -> str:
    """Without what a terminal would obey: anybody on the device can write to the list."""
    return "".join(character if character.isprintable() else "#" for character in text)


def show(instance: Instance, wanted: Wanted, stream: TextIO, colour: bool) -> int:
    """Prints what is stored and, when asked to, what comes until the device is off.

    Raises ControlError when the device or its Redis does not answer.
    """
    boot = control.boot_program(instance)
    status = _read(boot, wanted, stream, colour)
    while wanted.follow and status != REFUSED:
        following = _next_boot(instance, boot)
        if following is None:
            return 0
        # A new list began with the new boot.
        boot = following
        status = _read(boot, wanted, stream, colour)
    if status == NO_REDIS:
        raise ControlError("no stored records (./run do redis start)")
    return 2 if status == REFUSED else min(abs(status), 1)


def _next_boot(instance: Instance, boot: int) -> Optional[int]:
    """The boot program that follows on this one; None when the device is off."""
    while instance.is_running():
        try:
            now = control.boot_program(instance)
            if now != boot:
                return now
        except ControlError:
            pass
        pause(STEP)
    return None


def _read(boot: int, wanted: Wanted, stream: TextIO, colour: bool) -> int:
    """Prints what a reader on the device finds; its exit status."""
    reader = subprocess.Popen(
        entering(boot, wanted.words()), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE
    )
    assert reader.stdout is not None
    try:
        for raw in _records(reader.stdout):
            print(readable(raw, colour), file=stream, flush=wanted.follow)
    except BaseException:
        # It may be waiting for a Redis that hangs.
        reader.terminate()
        raise
    finally:
        # What runs on the device behind a command that enters it sees that nobody listens.
        reader.stdout.close()
        status = reader.wait()
    return status


def _records(lines: Iterator[bytes]) -> Iterator[str]:
    for line in lines:
        # One that the device's end cut short is no line.
        if line.endswith(b"\n"):
            yield str(json.loads(line))
