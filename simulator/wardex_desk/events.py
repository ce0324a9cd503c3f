"""What happened on the simulated device, one object per fact, as its journals tell it.

Units:  `at` is seconds on the monotonic clock, the one clock that every journal shares.
Errors: none; what could not be read is an event too (`Unreadable`), so that nothing gets lost.
"""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass, field

from wardex_desk.places import SERVICES

LEVELS = ("DEBUG", "DIAG", "TRACE", "INFO", "WARN", "ERROR", "FATAL", "EMERG")

SHORT_NAMES = {service.bus_name: service.name for service in SERVICES.values()} | {
    "com.orvo.wardex": "wardex"
}


def short_name(bus_name: str) -> str:
    """The name under which people know a service; an unknown bus name stays as it is."""
    return SHORT_NAMES.get(bus_name, bus_name)


@dataclass(frozen=True)
class Event:
    """Something that happened at one moment."""

    at: float


@dataclass(frozen=True)
class Boot(Event):
    """The device begins to run: `power-on`, `reboot` or `watchdog`."""

    reason: str


@dataclass(frozen=True)
class Record(Event):
    """A log record. One that the logger had to cut ends in the middle and has `whole` unset."""

    level: str
    source: str
    text: str
    pid: int = 0
    whole: bool = True

    def is_at_least(self, level: str) -> bool:
        """Whether the record is as bad as `level`; an unknown level name counts as the worst."""
        if self.level not in LEVELS:
            return True
        return LEVELS.index(self.level) >= LEVELS.index(level)


@dataclass(frozen=True)
class NameChanged(Event):
    """A bus name got an owner or lost it."""

    name: str
    owned: bool


@dataclass(frozen=True)
class Availability(Event):
    """The supervisor published which services are up; values are "up" or "down"."""

    services: Mapping[str, str] = field(hash=False)


@dataclass(frozen=True)
class ObserverState(Event):
    """An observer began to listen (`listening`) or lost what it listens to (`lost`)."""

    subject: str
    state: str


@dataclass(frozen=True)
class ScriptBegan(Event):
    """An init script or `reboot` was called. `stamp`: seconds, as written, cut to 10 ms."""

    script: str
    action: str
    stamp: float

    @property
    def call(self) -> str:
        """The call as a person would type it."""
        return f"{self.script} {self.action}".strip()


@dataclass(frozen=True)
class ScriptEnded(Event):
    """A script came to its end with the exit status `status`."""

    script: str
    action: str
    stamp: float
    status: int

    @property
    def call(self) -> str:
        """The call as a person would type it."""
        return f"{self.script} {self.action}".strip()


@dataclass(frozen=True)
class WatchdogEvent(Event):
    """What the watchdog's guard saw: open, gettimeout, write, close, removed or reset."""

    what: str


@dataclass(frozen=True)
class Feed(Event):
    """The watchdog was fed, for the `number`th time since the supervisor was started."""

    number: int


@dataclass(frozen=True)
class SupervisorEnded(Event):
    """The supervisor process is gone; 128 + n for one killed by signal n."""

    status: int


@dataclass(frozen=True)
class PingAnswered(Event):
    """A service was pinged and this is how it was told to answer."""

    service: str
    answer: str


@dataclass(frozen=True)
class Syslog(Event):
    """A line that reached the system log.

    priority: facility * 8 + severity, -1 if absent. program: who sent it, empty if it does not say.
    """

    priority: int
    program: str
    text: str


@dataclass(frozen=True)
class StandardError(Event):
    """A line that the supervisor wrote on standard error; `at` is when it was seen."""

    text: str


@dataclass(frozen=True)
class Unreadable(Event):
    """A line that makes no sense in its journal."""

    journal: str
    text: str
