"""What one line of each journal says.

Each parser takes a line without its line feed and the time at which it was read, and answers an
event, or None for a line that tells nothing. ParseError: the line makes no sense.
"""

from __future__ import annotations

import json
import re
from typing import Any

from wardex_desk.events import (
    Availability,
    Boot,
    Event,
    Feed,
    NameChanged,
    ObserverState,
    PingAnswered,
    Record,
    ScriptBegan,
    ScriptEnded,
    StandardError,
    SupervisorEnded,
    Syslog,
    WatchdogEvent,
)

# The uptime in the scripts' journal and the time in a record are cut, not rounded.
SCRIPT_STAMP_STEP_S = 0.01
RECORD_STAMP_STEP_S = 0.0001

_RECORD = re.compile(
    r'\{"T":"(?P<T>\d+\.\d{4})", "P":"(?P<P>-?\d+)", "C":"(?P<C>[A-Z]+)", '
    r'"S":"(?P<S>(?:[^"\\]|\\.)*)", "M":"(?P<M>(?:[^"\\]|\\.)*)(?P<end>"\})?',
    re.DOTALL,
)
_ESCAPE = re.compile(r"\\(.)", re.DOTALL)
# `<10>Nov 21 01:43:21 wardex[12]: text`, as the system's library sends it.
_SYSLOG = re.compile(
    r"(?:<(?P<priority>\d{1,3})>)?"
    r"(?:[A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d (?:(?P<program>[^\s:\[]+)(?:\[\d+\])?: )?)?"
    r"(?P<text>.*)",
    re.DOTALL,
)
_BOOT_REASONS = ("power-on", "reboot", "watchdog")


class ParseError(ValueError):
    """A line that does not belong into its journal."""


def _number(text: str) -> float:
    if not re.fullmatch(r"\d+(\.\d+)?", text):
        raise ParseError(text)
    return float(text)


def _whole_number(text: str) -> int:
    if not re.fullmatch(r"-?\d+", text):
        raise ParseError(text)
    return int(text)


def _object(line: str) -> dict[str, Any]:
    try:
        content = json.loads(line)
    except ValueError as error:
        raise ParseError(line) from error
    if not isinstance(content, dict):
        raise ParseError(line)
    return content


def _time(content: dict[str, Any], fallback: float) -> float:
    time = content.get("t", fallback)
    if isinstance(time, bool) or not isinstance(time, (int, float)):
        raise ParseError(str(time))
    return float(time)


def parse_boot(line: str, _now: float) -> Event | None:
    """`12.34 power-on`"""
    words = line.split()
    if len(words) != 2 or words[1] not in _BOOT_REASONS:
        raise ParseError(line)
    return Boot(_number(words[0]), words[1])


def parse_script(line: str, _now: float) -> Event | None:
    """`12.34 30_pictor restart begin` or `12.34 30_pictor restart end 0` or `12.34 reboot begin`

    A begin is dated to the end of its 10 ms, an end to their start: so a script begins after what
    caused it and ends before what it has caused.
    """
    words = line.split()
    if len(words) in (3, 4) and words[-1] == "begin":
        stamp = _number(words[0])
        action = words[2] if len(words) == 4 else ""
        return ScriptBegan(stamp + SCRIPT_STAMP_STEP_S, words[1], action, stamp)
    if len(words) in (4, 5) and words[-2] == "end":
        stamp = _number(words[0])
        action = words[2] if len(words) == 5 else ""
        return ScriptEnded(stamp, words[1], action, stamp, _whole_number(words[-1]))
    raise ParseError(line)


def parse_record(line: str, now: float) -> Event | None:
    """`{"t":12.345678,"event":"record","record":"..."}`, or what befell the observer itself."""
    content = _object(line)
    at = _time(content, now)
    if content.get("event", "record") != "record":
        return _observer_state(content, at, "records")
    raw = content.get("record")
    if not isinstance(raw, str):
        raise ParseError(line)
    return read_record(raw)


def read_record(raw: str) -> Record:
    """A record as it stands in the list, also one cut at 500 bytes with its zero byte."""
    match = _RECORD.match(raw)
    if match is None:
        raise ParseError(raw)
    whole = match["end"] is not None
    if whole and match.end() != len(raw):
        raise ParseError(raw)
    return Record(
        at=float(match["T"]) + RECORD_STAMP_STEP_S,
        level=match["C"],
        source=_ESCAPE.sub(r"\1", match["S"]),
        text=_ESCAPE.sub(r"\1", match["M"]).rstrip("\0"),
        pid=int(match["P"]),
        whole=whole,
    )


def parse_bus(line: str, now: float) -> Event | None:
    """`{"t":..,"event":"name"|"availability"|"listening"|"bus-lost", ...}`"""
    content = _object(line)
    at = _time(content, now)
    if content.get("event") == "name":
        name, owned = content.get("name"), content.get("owned")
        if not isinstance(name, str) or not isinstance(owned, bool):
            raise ParseError(line)
        return NameChanged(at, name, owned)
    if content.get("event") == "availability":
        services = content.get("services")
        if not isinstance(services, dict):
            raise ParseError(line)
        return Availability(at, {str(name): str(state) for name, state in services.items()})
    return _observer_state(content, at, "bus")


def _observer_state(content: dict[str, Any], at: float, subject: str) -> Event:
    states = {"listening": "listening", "redis-lost": "lost", "bus-lost": "lost"}
    word = content.get("event")
    if word not in states:
        raise ParseError(str(word))
    return ObserverState(at, subject, states[word])


def parse_watchdog(line: str, _now: float) -> Event | None:
    """`12.345678 open|gettimeout|feed N|write|close|removed|reset|exit STATUS`"""
    words = line.split()
    if len(words) < 2:
        raise ParseError(line)
    at = _number(words[0])
    if words[1] == "feed" and len(words) == 3:
        return Feed(at, _whole_number(words[2]))
    if words[1] == "exit" and len(words) == 3:
        return SupervisorEnded(at, _whole_number(words[2]))
    if words[1] in ("open", "gettimeout", "write", "close", "removed", "reset"):
        return WatchdogEvent(at, words[1])
    raise ParseError(line)


def parse_ping(line: str, _now: float) -> Event | None:
    """`12.345678 pictor up`"""
    words = line.split()
    if len(words) < 3:
        raise ParseError(line)
    return PingAnswered(_number(words[0]), words[1], " ".join(words[2:]))


def parse_syslog(line: str, _now: float) -> Event | None:
    """`12.345678 <10>Nov 21 01:43:21 wardex: text`"""
    stamp, _, datagram = line.partition(" ")
    match = _SYSLOG.fullmatch(datagram)
    assert match is not None
    priority = int(match["priority"]) if match["priority"] else -1
    return Syslog(_number(stamp), priority, match["program"] or "", match["text"])


def parse_standard_error(line: str, now: float) -> Event | None:
    """Whatever the supervisor said; it carries no time of its own."""
    return StandardError(now, line)
