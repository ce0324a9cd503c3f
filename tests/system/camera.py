"""A camera on the desk with the real supervisor on it, and what can be seen of that one."""

import json
import re
from dataclasses import dataclass

from wardex_desk.device import Device
from wardex_desk.events import Availability, NameChanged, Record
from wardex_desk.places import PROGRAMS
from wardex_desk.redis_client import RedisError
from wardex_desk.sources_parse import parse_bus, parse_record
from wardex_desk.waiting import poll

# Ends only a claim that fails; a busy machine must not.
BOUND = 40.0
# Between two looks at a journal.
STEP = 0.05
# For a journal that another program writes at once.
PATIENCE = 2.0

WARDEX = f"{PROGRAMS}/wardex"
VISTOR = "com.orvo.vistor"
PICTOR = "com.orvo.pictor"
WIRL = "com.orvo.wirl"
QUORL = "com.orvo.quorl"

SUPERVISES = "wardex: supervision activity starting, Bello the watchdog, is unfused ..."
DEVELOPS = "wardex starting in developer mode"


@dataclass(frozen=True)
class Answer:
    """What a method of the supervisor answered: the status, then the texts that follow it."""

    code: int
    message: str
    values: tuple[str, ...] = ()


class Camera(Device):
    """A device with views on its supervisor. Every await_... fails the claim after `bound` seconds."""

    bound = BOUND
    # The end of the list that the journal was not seen to get: another program has written it.
    _foreign = None
    _has_list = True

    # The records.

    def records(self, *levels):
        """The records so far, all or those of some levels."""
        self._catch_up()
        found = [parse_record(line, 0.0) for line in self.lines("records")]
        records = [record for record in found if isinstance(record, Record)]
        return [record for record in records if not levels or record.level in levels]

    def _catch_up(self):
        """Waits until the journal has what the list of records ends with.

        Whoever knows by an answer of the supervisor's that it has logged something knows of the
        list, while the journal is written by a program that has to wake up first.
        """
        try:
            last = self._last_of_list() if self._has_list else None
        except (OSError, RedisError):
            # Asked once: one that stands still would hold up each look.
            self._has_list = False
            return
        if last in (None, self._foreign):
            return

        def is_journalled():
            lines = reversed(self.lines("records"))
            return any(json.loads(line).get("record") == last for line in lines)

        if not poll(is_journalled, PATIENCE, STEP):
            self._foreign = last

    def _last_of_list(self):
        with self.connect_redis() as cache:
            found = cache.command("LRANGE", "LOG:ENTRIES", "-1", "-1")
        return found[0].decode("utf-8", "replace") if found else None

    def texts(self, *levels):
        """What the records say."""
        return [record.text for record in self.records(*levels)]

    def complaints(self):
        """What stands out at the default mask, WARN and above.

        Without what the kernel refuses the supervisor of a user who is not root.
        """
        found = [(record.level, record.text) for record in self.records() if is_complaint(record)]
        if not self.shortcomings():
            return found
        return [(level, text) for level, text in found if not is_refusal(text)]

    def await_text(self, text, times=1):
        """Waits until the records have said this so many times."""
        self.await_true(lambda: self.texts().count(text) >= times, f"{times} x '{text}'")

    def await_true(self, condition, what):
        """Waits for a condition; answers what it answers."""
        return self.wait_for(condition, self.bound, what, STEP)

    def await_stable(self):
        """Waits until both judged services are up."""
        self.await_text("SuprStableSystem::entry")

    def path(self, machine):
        """The states a machine has entered: "system", or of a service's bus name."""
        where = "System::entry" if machine == "system" else f"::entry ({machine})"
        return [text.split("::")[0] for text in self.texts("TRACE") if text.endswith(where)]

    # The hardware and the files.

    def watchdog(self):
        """The watchdog's journal without its times and numbers."""
        return [line.split()[1] for line in self.lines("watchdog")]

    def feeds(self):
        """When the watchdog was fed, in seconds."""
        lines = [line.split() for line in self.lines("watchdog")]
        return [float(words[0]) for words in lines if words[1] == "feed"]

    def await_feeds(self, count):
        """Waits for so many more feeds."""
        already = len(self.feeds())
        self.await_true(lambda: len(self.feeds()) >= already + count, f"{count} more feeds")

    def await_end(self):
        """Waits for the supervisor's end and answers its exit status."""
        ends = self.await_true(
            lambda: [line.split()[2] for line in self.lines("watchdog") if " exit " in line],
            "the supervisor's end",
        )
        return int(ends[-1])

    def pings(self, service):
        """What a service was told to answer, ping by ping."""
        found = [line.split() for line in self.lines("pings")]
        return [" ".join(words[2:]) for words in found if words[1] == service]

    def calls(self):
        """The scripts' journal since the services were started, without its times."""
        calls = [line.split(" ", 1)[1] for line in self.lines("scripts")]
        started = "mf-optware start end 0"
        return calls[calls.index(started) + 1 :] if started in calls else calls

    def listed(self):
        """The names of the running programs, as ps shows them."""
        return self.run("ps", "-e", "-o", "comm=")[1].split()

    def process(self):
        """The supervisor's process id on the device; 0 while there is none."""
        return int(self.run("ps", "-C", "wardex", "-o", "pid=")[1] or 0)

    # The bus.

    def call(self, method, *arguments):
        """Calls the supervisor's method; its status and the texts after it."""
        words = ("dbus-send", "--system", "--print-reply", "--dest=com.orvo.wardex", "/")
        status, output = self.run(*words, f"com.orvo.wardex.{method}", *arguments)
        assert status == 0, output
        code = re.search(r"int32 (-?\d+)", output)
        texts = re.findall(r'^ *string "(.*)"$', output, re.MULTILINE)
        return Answer(int(code[1]), texts[0], tuple(texts[1:]))

    def send(self, method, *arguments):
        """Calls the supervisor's method and does not wait for the answer."""
        words = ("dbus-send", "--system", "--type=method_call", "--dest=com.orvo.wardex", "/")
        self.run(*words, f"com.orvo.wardex.{method}", *arguments)

    def await_bus_name(self):
        """Waits until the supervisor can be called."""
        self.await_true(lambda: "com.orvo.wardex" in self.owned_names(), "the supervisor's name")

    def owned_names(self):
        """The names that got an owner so far, in order."""
        changes = [parse_bus(line, 0.0) for line in self.lines("bus")]
        return [change.name for change in changes if isinstance(change, NameChanged)]

    def availability(self):
        """The published maps, in order, as {short bus name: state}."""
        found = [parse_bus(line, 0.0) for line in self.lines("bus")]
        return [
            {name.removeprefix("com.orvo."): state for name, state in event.services.items()}
            for event in found
            if isinstance(event, Availability)
        ]


def is_complaint(record):
    """Whether a record passes the default mask."""
    return record.is_at_least("WARN")


def is_refusal(said):
    """Whether this is what the supervisor says when the kernel refuses it a real-time duty."""
    return said.startswith(("sched_setscheduler() failed: (", "mlockall() failed: ("))


def text(value):
    """A text among the arguments of Camera.call."""
    return f"string:{value}"


def number(value):
    """A number among the arguments of Camera.call."""
    return f"int32:{value}"
