"""Reads the state machines' trace records: who is in which state, and why.

The trace texts are the daemon's: "SuprUp::exit (com.orvo.pictor)", "SuprStableSystem::entry",
"Ping com.orvo.pictor failed". Some name a reason without the service; the next one names it.
"""

from __future__ import annotations

import re
from collections.abc import Iterator

from wardex_desk.events import short_name

# Bad pings in a row after which SuprUp gives a service up.
STRIKES_IN_UP = 4

_SERVICE_EVENT = re.compile(r"(Supr[A-Za-z]+)::(\w+) \((.+)\)")
_SYSTEM_EVENT = re.compile(r"(Supr[A-Za-z]+System)::(entry|exit)")
_PING_FAILED = re.compile(r"Ping (\S+) failed")

_REASONS = {
    "Ping threshold exceeded. Going down": "does not answer",
    "System run level is down. Going down.": 'run level "down"',
    "System run level STARTING. Going starting": 'run level "starting"',
}
_NOT_REGISTERED = re.compile(r"Service (\S+) not registered anymore\?! Going down\.")

_TONES = {
    "SuprStarting": "attention",
    "SuprUp": "good",
    "SuprDown": "bad",
    "SuprStartingSystem": "attention",
    "SuprStableSystem": "good",
    "SuprUnstableSystem": "bad",
    "SuprRebootSystem": "bad",
}

Words = tuple[str, str, str]


class Machines:
    """The states that the records tell, of the system and of each service."""

    def __init__(self) -> None:
        self._states: dict[str, str] = {}
        self._strikes: dict[str, int] = {}
        self._struck: set[str] = set()
        self._reason = ""

    def hear(self, text: str) -> Iterator[Words]:
        """The words that a trace record is worth: (actor, text, tone)."""
        if match := _SERVICE_EVENT.fullmatch(text):
            yield from self._service_event(match[1], match[2], short_name(match[3]))
        elif match := _SYSTEM_EVENT.fullmatch(text):
            if match[2] == "entry":
                yield self._enter("system", match[1], "")
        elif match := _PING_FAILED.fullmatch(text):
            yield self._strike(short_name(match[1]))
        elif text in _REASONS:
            self._reason = _REASONS[text]
        elif _NOT_REGISTERED.fullmatch(text):
            self._reason = "gone from the bus"

    def pinged(self, service: str) -> None:
        """A ping has reached the service: if the one before was not missed, its strikes are over."""
        if service not in self._struck:
            self._strikes[service] = 0
        self._struck.discard(service)

    def _service_event(self, state: str, event: str, service: str) -> Iterator[Words]:
        if event == "entry":
            reason, self._reason = self._reason, ""
            self._strikes[service] = 0
            self._struck.discard(service)
            yield self._enter(service, state, reason)

    def _enter(self, actor: str, state: str, reason: str) -> Words:
        before = self._states.get(actor)
        self._states[actor] = state
        way = f"{before} -> {state}" if before else state
        return actor, f"{way}  ({reason})" if reason else way, _TONES.get(state, "plain")

    def _strike(self, service: str) -> Words:
        self._strikes[service] = self._strikes.get(service, 0) + 1
        self._struck.add(service)
        count = self._strikes[service]
        tone = "bad" if count >= STRIKES_IN_UP else "attention"
        return service, f"ping failed, strike {count} of {STRIKES_IN_UP}", tone
