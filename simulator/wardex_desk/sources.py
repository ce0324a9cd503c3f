"""Follows the journals of a device and makes one stream of events out of them, in time's order.

Units:   seconds on the monotonic clock.
Errors:  a missing journal is an empty one; a line that cannot be read becomes `Unreadable`; half a
         line waits for its other half.
"""

from __future__ import annotations

import os
from collections.abc import Callable, Iterable
from dataclasses import replace
from pathlib import Path

from wardex_desk.events import Boot, Event, Unreadable
from wardex_desk.sources_parse import (
    SCRIPT_STAMP_STEP_S,
    ParseError,
    parse_boot,
    parse_bus,
    parse_ping,
    parse_record,
    parse_script,
    parse_standard_error,
    parse_syslog,
    parse_watchdog,
)

# Longer than the observers need from the fact to the line in their journal.
SETTLING_S = 0.15

Parser = Callable[[str, float], "Event | None"]

JOURNALS: dict[str, Parser] = {
    "boots": parse_boot,
    "scripts": parse_script,
    "records": parse_record,
    "bus": parse_bus,
    "watchdog": parse_watchdog,
    "pings": parse_ping,
    "syslog": parse_syslog,
    "wardex.err": parse_standard_error,
}


class Journal:
    """One file that somebody else appends to.

    Owns: nothing; the file is opened anew for each look, so it may be replaced or emptied.
    """

    def __init__(self, path: Path, parser: Parser) -> None:
        self._path = path
        self._parser = parser
        self._inode = 0
        self._position = 0
        self._half_line = b""
        self._latest = 0.0

    def read(self, now: float) -> list[Event]:
        """The events of the lines that were completed since the last call."""
        return [event for line in self._new_lines() if (event := self._parse(line, now))]

    def _parse(self, line: bytes, now: float) -> Event | None:
        text = line.decode("utf-8", "backslashreplace")
        if not text.strip():
            return None
        try:
            event = self._parser(text, now)
        except ParseError:
            return Unreadable(self._latest or now, self._path.name, text)
        if event is None:
            return None
        # A script that took less than its journal's 10 ms must not end before it began.
        if 0 < self._latest - event.at < 2 * SCRIPT_STAMP_STEP_S:
            event = replace(event, at=self._latest)
        self._latest = event.at
        return event

    def _new_lines(self) -> list[bytes]:
        try:
            with self._path.open("rb") as file:
                state = os.fstat(file.fileno())
                if state.st_ino != self._inode or state.st_size < self._position:
                    self._inode, self._position, self._half_line = state.st_ino, 0, b""
                file.seek(self._position)
                fresh = file.read()
        except FileNotFoundError:
            return []
        self._position += len(fresh)
        *lines, self._half_line = (self._half_line + fresh).split(b"\n")
        return lines


class EventStream:
    """All journals of one device, merged.

    folder: the instance folder; the journals are in its folder `log`.
    """

    def __init__(self, folder: Path) -> None:
        self._journals = [
            Journal(folder / "log" / name, parser) for name, parser in JOURNALS.items()
        ]
        self._waiting: list[Event] = []
        self._seen: list[Event] = []

    @property
    def seen(self) -> list[Event]:
        """Every event handed out so far."""
        return self._seen

    @property
    def pending(self) -> list[Event]:
        """Events read but not yet handed out, in no particular order."""
        return self._waiting

    def read(self, now: float) -> list[Event]:
        """Events that are old enough for nothing earlier to be still on its way, in time's order."""
        self._fetch(now)
        ripe = [event for event in self._waiting if event.at <= now - SETTLING_S]
        self._waiting = [event for event in self._waiting if event.at > now - SETTLING_S]
        return self._hand_out(ripe)

    def drain(self, now: float) -> list[Event]:
        """All that is left, however young: for the end of a story."""
        self._fetch(now)
        rest, self._waiting = self._waiting, []
        return self._hand_out(rest)

    def _fetch(self, now: float) -> None:
        for journal in self._journals:
            self._waiting.extend(journal.read(now))

    def _hand_out(self, events: Iterable[Event]) -> list[Event]:
        ordered = in_order(events)
        self._seen.extend(ordered)
        return ordered


def in_order(events: Iterable[Event]) -> list[Event]:
    """Sorts by time; what a journal wrote in one moment keeps its order."""
    return sorted(events, key=lambda event: (event.at, not isinstance(event, Boot)))
