"""The stage on which a scenario plays: the device, its events as they come, and bounded waits.

Units:   seconds.
Errors:  `NotSeen` when what a scenario waits for does not happen within its bound.
"""

from __future__ import annotations

from collections.abc import Callable

from wardex_desk.controls import Controls, NotSeen
from wardex_desk.events import (
    Boot,
    Event,
    Feed,
    NameChanged,
    PingAnswered,
    Record,
    ScriptBegan,
    SupervisorEnded,
    WatchdogEvent,
)
from wardex_desk.judge import Verdict
from wardex_desk.places import SERVICES
from wardex_desk.sources import EventStream
from wardex_desk.story import Story
from wardex_desk.story_print import Printer
from wardex_desk.waiting import now, pause

# Between two looks at the journals.
LOOK_S = 0.04

Sign = Callable[[Event], bool]


class Stage:
    """What a scenario's driver may do: give orders through `device`, and wait for signs.

    `verdict` takes claims about what only the driver can see, such as an answer to a call.

    Borrows: the device's controls, the stream, the story, its printer and the verdict.
    Threads: one.
    """

    def __init__(
        self,
        device: Controls,
        stream: EventStream,
        story: Story,
        printer: Printer | None,
        verdict: Verdict | None = None,
    ) -> None:
        self.device = device
        self.verdict = verdict if verdict is not None else Verdict()
        self._stream = stream
        self._story = story
        self._printer = printer
        self._next = 0

    def await_sign(self, what: str, sign: Sign, within: float, times: int = 1) -> None:
        """Waits until the sign has been seen, counting from the sign awaited before.

        Raises NotSeen with `what` after `within` seconds.
        """
        left = times
        end = now() + within
        while True:
            self.look()
            while self._next < len(self._stream.seen):
                event = self._stream.seen[self._next]
                self._next += 1
                left -= sign(event)
                if left == 0:
                    return
            if now() >= end:
                seen = f", seen {times - left} of {times} times" if times > 1 else ""
                raise NotSeen(f"not seen within {within:g} s: {what}{seen}")
            pause(LOOK_S)

    def look(self) -> None:
        """Takes in what has happened by now, and tells it."""
        self._tell(self._stream.read(now()))

    def close(self) -> None:
        """Takes in and tells what is left at the end."""
        self._tell(self._stream.drain(now()))
        if self._printer is not None:
            self._printer.lines(self._story.finish())

    def _tell(self, events: list[Event]) -> None:
        for event in events:
            lines = self._story.tell(event)
            if self._printer is not None and lines:
                self._printer.lines(lines)


def enters(actor: str, state: str) -> Sign:
    """A machine enters a state; `actor` is "system" or a service's short name."""
    where = "" if actor == "system" else f" ({SERVICES[actor].bus_name})"
    return writes(f"{state}::entry{where}")


def writes(text: str) -> Sign:
    """The supervisor writes a record with this text."""
    return lambda event: isinstance(event, Record) and event.text == text


def calls(words: str) -> Sign:
    """A script or command is called."""
    return lambda event: isinstance(event, ScriptBegan) and event.call == words


def answers(service: str, answer: str) -> Sign:
    """A service is pinged and told to answer so."""
    return lambda event: (
        isinstance(event, PingAnswered) and (event.service, event.answer) == (service, answer)
    )


def leaves_the_bus(service: str) -> Sign:
    """A service's bus name has no owner any more."""
    name = SERVICES[service].bus_name
    return lambda event: isinstance(event, NameChanged) and event.name == name and not event.owned


def feeds() -> Sign:
    """The watchdog is fed."""
    return lambda event: isinstance(event, Feed)


def resets() -> Sign:
    """The watchdog resets the device."""
    return lambda event: isinstance(event, WatchdogEvent) and event.what == "reset"


def boots(reason: str) -> Sign:
    """The device boots."""
    return lambda event: isinstance(event, Boot) and event.reason == reason


def supervisor_ends() -> Sign:
    """The supervisor's process is gone."""
    return lambda event: isinstance(event, SupervisorEnded)
