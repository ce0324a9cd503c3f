"""Writes the events of devices that never stood on a desk, for claims about stories and verdicts."""

from wardex_desk.events import (
    Availability,
    Boot,
    Feed,
    NameChanged,
    Record,
    ScriptBegan,
    ScriptEnded,
    SupervisorEnded,
    Syslog,
    WatchdogEvent,
)
from wardex_desk.judge_evidence import lives
from wardex_desk.sources import in_order

BUS_NAMES = {"pictor": "com.orvo.pictor", "corvane": "com.orvo.vistor"}
MOMENT = 0.001


class Canned:
    """A device's events; times are seconds, power-on at 100."""

    def __init__(self, reason="power-on", at=100.0):
        self.events = [Boot(at, reason)]

    def add(self, event):
        self.events.append(event)
        return self

    def record(self, at, level, text, source="wardex"):
        return self.add(Record(at, level, source, text, pid=7))

    def trace(self, at, text):
        return self.record(at, "TRACE", text)

    def enters(self, at, actor, state):
        where = "" if actor == "system" else f" ({BUS_NAMES[actor]})"
        return self.trace(at, f"{state}::entry{where}")

    def call(self, at, script, action="", seconds=0.2, status=0):
        self.add(ScriptBegan(at, script, action, at))
        if script != "reboot":
            self.add(ScriptEnded(at + seconds, script, action, at + seconds, status))
        return self

    def announces(self, at, pictor, corvane):
        services = {"com.orvo.pictor": pictor, "com.orvo.vistor": corvane}
        return self.add(Availability(at, services))

    def feeds(self, *moments):
        done = sum(isinstance(event, Feed) for event in self.events)
        for number, at in enumerate(moments, done + 1):
            self.add(Feed(at, number))
        return self

    def armed(self, at):
        return self.add(WatchdogEvent(at, "open")).add(WatchdogEvent(at, "gettimeout"))

    def reset(self, at):
        return self.add(WatchdogEvent(at, "reset"))

    def syslog(self, at, text, program="wardex"):
        return self.add(Syslog(at, 10, program, text))

    def supervisor_starts(self, at, first, family=None):
        self.record(at, "WARN", first)
        if family:
            self.record(
                at + MOMENT, "WARN", f"Registerinng services for the {family} family of devices"
            )
            self.add(NameChanged(at + 2 * MOMENT, "com.orvo.wardex", True))
        return self

    def supervisor_ends(self, at, status):
        return self.add(SupervisorEnded(at, status))

    def without(self, unwanted):
        """The same device without the events that `unwanted` picks."""
        copy = Canned()
        copy.events = [event for event in self.events if not unwanted(event)]
        return copy

    def then(self, other):
        """The same device, living on as `other`."""
        copy = Canned()
        copy.events = self.events + other.events
        return copy

    def copy(self):
        return self.without(lambda event: False)

    def lives(self):
        return lives(in_order(self.events))

    def life(self):
        return self.lives()[0]
