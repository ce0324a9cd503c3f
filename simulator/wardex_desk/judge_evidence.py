"""What the journals say about one device, in the terms of the rules: lives, states, calls, feeds.

Units: seconds on the monotonic clock, shown as seconds since power-on.
"""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from functools import cached_property

from wardex_desk.events import (
    Availability,
    Boot,
    Event,
    Feed,
    NameChanged,
    Record,
    ScriptBegan,
    ScriptEnded,
    SupervisorEnded,
    Syslog,
    WatchdogEvent,
    short_name,
)

SUPERVISOR = "wardex"
SYSTEM = "system"
REFUSED_DUTIES = ("sched_setscheduler() failed: (", "mlockall() failed: (")


@dataclass(frozen=True)
class Span:
    """A state machine was in `state`; `end` is None for the last state of a life."""

    state: str
    begin: float
    end: float | None


@dataclass(frozen=True)
class Call:
    """A script or command that nobody else's script has called. `end`: None if it never came back."""

    words: str
    begin: float
    end: float | None
    status: int | None


class Life:
    """The events of one life of the device: from a boot to the next.

    Shows only what the supervisor did, wrote and said; other programs' records do not count.
    """

    def __init__(self, events: Sequence[Event], power_on: float) -> None:
        self.events = events
        self.power_on = power_on

    @property
    def reason(self) -> str:
        """Why the device booted, empty when no journal says so."""
        return next((event.reason for event in self.events if isinstance(event, Boot)), "")

    def until(self, moment: float) -> Life:
        """The same life up to a moment, for a story that goes on faster than its driver."""
        return Life([event for event in self.events if event.at <= moment], self.power_on)

    def clock(self, at: float) -> str:
        """A moment as the story shows it."""
        return f"{at - self.power_on:8.2f} s"

    @cached_property
    def records(self) -> list[Record]:
        """All records of the supervisor, in the order written."""
        return [
            event
            for event in self.events
            if isinstance(event, Record) and event.source == SUPERVISOR
        ]

    @cached_property
    def complaints(self) -> list[Record]:
        """The records of WARN or worse, without the real-time duties that a user may not do."""
        return [
            record
            for record in self.records
            if record.is_at_least("WARN") and not _is_refused_duty(record)
        ]

    @cached_property
    def refusals(self) -> list[str]:
        """The real-time duties that this machine refused the supervisor, in its own words."""
        return [record.text for record in self.records if _is_refused_duty(record)]

    def said(self, text: str) -> list[Record]:
        """The records with exactly this text."""
        return [record for record in self.records if record.text == text]

    def spans(self, actor: str) -> list[Span]:
        """The states of a service ("pictor") or of the system, one after the other."""
        begun: list[tuple[str, float]] = []
        for record in self.records:
            state, _, rest = record.text.partition("::")
            event, _, service = rest.partition(" ")
            owner = short_name(service.strip("()")) if service else SYSTEM
            if event == "entry" and owner == actor and state.startswith("Supr"):
                begun.append((state, record.at))
        ends: list[float | None] = [at for _, at in begun[1:]]
        return [Span(state, at, end) for (state, at), end in zip(begun, ends + [None])]

    def path(self, actor: str) -> list[str]:
        """The names of those states."""
        return [span.state for span in self.spans(actor)]

    @cached_property
    def feeds(self) -> list[float]:
        """When the watchdog was fed."""
        return [event.at for event in self.events if isinstance(event, Feed)]

    def feeds_in(self, span: Span) -> int:
        """How often the watchdog was fed while a machine was in this state."""
        return sum(span.begin < at and (span.end is None or at < span.end) for at in self.feeds)

    @cached_property
    def watchdog(self) -> list[str]:
        """What else happened to the watchdog: open, gettimeout, write, close, reset."""
        return [event.what for event in self.events if isinstance(event, WatchdogEvent)]

    @cached_property
    def endings(self) -> list[int]:
        """The statuses with which a supervisor ended."""
        return [event.status for event in self.events if isinstance(event, SupervisorEnded)]

    @cached_property
    def signals(self) -> list[dict[str, str]]:
        """The availability signals, by short names."""
        return [
            {short_name(name): state for name, state in sorted(event.services.items())}
            for event in self.events
            if isinstance(event, Availability)
        ]

    @cached_property
    def syslog(self) -> list[tuple[int, str]]:
        """Priority and text of each line that the supervisor sent to the system log."""
        lines = [event for event in self.events if isinstance(event, Syslog)]
        return [(line.priority, line.text) for line in lines if line.program == SUPERVISOR]

    def owned(self, name: str) -> list[bool]:
        """How a bus name came (True) and went (False)."""
        changes = [e for e in self.events if isinstance(e, NameChanged) and e.name == name]
        return [change.owned for change in changes]

    @cached_property
    def calls(self) -> list[Call]:
        """The supervisor's own calls: after its first record, and not made by another script."""
        awake = self.records[0].at if self.records else float("inf")
        calls: list[Call] = []
        running: ScriptBegan | None = None
        for event in self.events:
            if isinstance(event, ScriptBegan) and running is None:
                running = event
                if event.script == "reboot":
                    calls.append(Call(event.call, event.at, None, None))
                    running = None
            elif isinstance(event, ScriptEnded) and running and event.call == running.call:
                calls.append(Call(event.call, running.at, event.at, event.status))
                running = None
        if running is not None:
            calls.append(Call(running.call, running.at, None, None))
        return [call for call in calls if call.begin >= awake]


def _is_refused_duty(record: Record) -> bool:
    return record.level == "WARN" and record.text.startswith(REFUSED_DUTIES)


def lives(events: Iterable[Event]) -> list[Life]:
    """Cuts a device's events at its boots. What comes before the first boot belongs to it."""
    chapters: list[list[Event]] = [[]]
    for event in events:
        if isinstance(event, Boot) and any(isinstance(e, Boot) for e in chapters[-1]):
            chapters.append([])
        chapters[-1].append(event)
    first = chapters[0]
    power_on = next((e.at for e in first if isinstance(e, Boot)), first[0].at if first else 0.0)
    return [Life(chapter, power_on) for chapter in chapters]
