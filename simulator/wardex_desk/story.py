"""Turns events into the story that a person reads: one line each, with the time since power-on.

Units:  seconds since the first boot of the device.
Errors: none; an event that a person need not see gives no line, one that cannot be read is shown.
"""

from __future__ import annotations

from collections.abc import Iterator
from dataclasses import dataclass

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
    Unreadable,
    WatchdogEvent,
    short_name,
)
from wardex_desk.story_feeds import FeedCount
from wardex_desk.story_flood import Flood
from wardex_desk.story_machines import Machines

# A script that takes longer gets a line when it begins, too.
PACKAGE_SCRIPT = "mf-optware"

_BAD = ("FATAL", "EMERG", "ERROR")


@dataclass(frozen=True)
class Line:
    """One line of the story. `tone`: good, attention, bad, plain or quiet."""

    at: float
    actor: str
    text: str
    tone: str = "plain"


class Story:
    """Tells one device's story.

    Owns:    what it must remember to tell it: the states, the strikes, the feeds not yet told.
    Threads: one.
    """

    def __init__(self) -> None:
        self._power_on: float | None = None
        self._boots = 0
        self._machines = Machines()
        self._feeds = FeedCount()
        self._flood = Flood()
        self._answers: dict[str, str] = {}
        self._scripts: dict[str, float] = {}

    def tell(self, event: Event) -> list[Line]:
        """The lines that this event is worth; events come in time's order."""
        if self._power_on is None:
            self._power_on = event.at
        since = event.at - self._power_on
        lines: list[Line] = []
        for actor, text, tone in self._words(event):
            line = Line(since, actor, text, tone)
            lines.extend(Line(*known) for known in self._flood.admit(line.at, actor, text, tone))
        return lines

    def finish(self) -> list[Line]:
        """What was still to be summed up when the story ends."""
        rest = [Line(*line) for line in self._flood.drain()]
        if self._power_on is not None and (summary := self._feeds.summary()):
            at = self._feeds.latest - self._power_on
            rest.append(Line(at, "watchdog", summary, "quiet"))
        return sorted(rest, key=lambda line: line.at)

    def _words(self, event: Event) -> Iterator[tuple[str, str, str]]:
        if isinstance(event, Feed):
            yield from (("watchdog", text, tone) for text, tone in self._feeds.fed(event.at))
        elif isinstance(event, Record):
            yield from self._record(event)
        elif isinstance(event, PingAnswered):
            yield from self._ping(event)
        elif isinstance(event, (ScriptBegan, ScriptEnded)):
            yield from self._script(event)
        elif isinstance(event, NameChanged):
            state, tone = (
                ("is on the bus", "good") if event.owned else ("left the bus", "attention")
            )
            yield short_name(event.name), f"{state} ({event.name})", tone
        elif isinstance(event, Availability):
            yield self._availability(event)
        else:
            yield from self._device(event)

    def _record(self, record: Record) -> Iterator[tuple[str, str, str]]:
        if record.is_at_least("INFO"):
            actor = record.source or "?"
            tone = "bad" if record.level in _BAD else "attention"
            cut = "" if record.whole else " [cut]"
            yield actor, f"{record.level:<5} {record.text}{cut}", (
                "plain" if record.level == "INFO" else tone
            )
        else:
            yield from self._machines.hear(record.text)

    def _ping(self, ping: PingAnswered) -> Iterator[tuple[str, str, str]]:
        self._machines.pinged(ping.service)
        if self._answers.get(ping.service) != ping.answer:
            self._answers[ping.service] = ping.answer
            tone = {"up": "good", "starting": "attention"}.get(ping.answer, "bad")
            yield ping.service, f"is pinged: {_ANSWERS.get(ping.answer, ping.answer)}", tone

    def _script(self, event: ScriptBegan | ScriptEnded) -> Iterator[tuple[str, str, str]]:
        if isinstance(event, ScriptBegan):
            self._scripts[event.call] = event.stamp
            if event.script == "reboot":
                yield from self._fed_so_far()
                yield "device", "is told to reboot", "bad"
            elif event.script == PACKAGE_SCRIPT:
                yield "scripts", f"{event.call} ...", "attention"
            return
        begun = self._scripts.pop(event.call, event.stamp)
        result = f"done in {event.stamp - begun:.2f} s"
        if event.status != 0:
            result = f"failed with status {event.status} after {event.stamp - begun:.2f} s"
        yield "scripts", f"{event.call}: {result}", "bad" if event.status else "plain"

    @staticmethod
    def _availability(event: Availability) -> tuple[str, str, str]:
        words = [f"{short_name(name)} {state}" for name, state in sorted(event.services.items())]
        all_up = all(state == "up" for state in event.services.values())
        return "wardex", "says: " + ", ".join(words), "good" if all_up else "attention"

    def _device(self, event: Event) -> Iterator[tuple[str, str, str]]:
        if isinstance(event, Boot):
            yield from self._boot(event)
        elif isinstance(event, WatchdogEvent):
            yield from self._watchdog(event)
        elif isinstance(event, SupervisorEnded):
            yield from self._fed_so_far()
            yield "wardex", _ending(event.status), "bad" if event.status else "attention"
        elif isinstance(event, Syslog):
            yield "syslog", f"{event.program}: {event.text}".lstrip(": "), "attention"
        elif isinstance(event, StandardError):
            yield "wardex", f"stderr: {event.text}", "attention"
        elif isinstance(event, ObserverState) and event.state == "lost":
            yield "desk", f"lost sight of the {event.subject}", "attention"
        elif isinstance(event, Unreadable):
            yield "desk", f"cannot read in {event.journal}: {event.text}", "bad"

    def _boot(self, event: Boot) -> Iterator[tuple[str, str, str]]:
        yield from self._fed_so_far()
        self._boots += 1
        self._machines = Machines()
        self._feeds = FeedCount()
        self._answers.clear()
        for call in self._scripts:
            if not call.startswith("reboot"):
                yield "scripts", f"{call}: cut off", "attention"
        self._scripts.clear()
        if event.reason == "power-on":
            yield "device", "is switched on", "good"
        else:
            yield "device", f"boots again after the {event.reason} (boot {self._boots})", "attention"

    def _watchdog(self, event: WatchdogEvent) -> Iterator[tuple[str, str, str]]:
        if event.what == "open":
            yield "watchdog", "is armed", "plain"
        elif event.what == "close":
            yield "watchdog", "is let go, and counts on", "attention"
        elif event.what == "reset":
            yield from self._fed_so_far()
            silence = self._feeds.silence(event.at)
            yield "watchdog", f"not fed for {silence:.1f} s: resets the device", "bad"

    def _fed_so_far(self) -> Iterator[tuple[str, str, str]]:
        if summary := self._feeds.summary():
            yield "watchdog", summary, "quiet"


_ANSWERS = {
    "up": 'answers "up"',
    "starting": 'answers "starting"',
    "down": 'answers "down"',
    "hang": "no answer",
    "crash": "crashes",
    "error": "answers with an error",
}

_SIGNALS = {6: "SIGABRT", 9: "SIGKILL", 11: "SIGSEGV", 15: "SIGTERM"}


def _ending(status: int) -> str:
    if status > 128:
        number = status - 128
        return (
            f"is killed by signal {number} ({_SIGNALS[number]})"
            if number in _SIGNALS
            else (f"is killed by signal {number}")
        )
    return f"ends with status {status}"
