"""What a person or a scenario can do to a device that stands on the desk."""

from pathlib import Path
from typing import Any, Callable, Optional, Sequence

from wardex_desk import control, eeprom
from wardex_desk.eeprom import DescriptionError, Record
from wardex_desk.i2c_tree import I2cTree
from wardex_desk.instance import Instance
from wardex_desk.places import (
    CACHE_SOCKET,
    DEVELOPER_MARKERS,
    KNOBS,
    LOGS,
    ORDERS,
    SCRIPTS,
    SERVICES,
    STORE_SOCKET,
)
from wardex_desk.redis_client import RedisClient
from wardex_desk.waiting import now, poll

REDIS_SOCKETS = {"redis-cache": CACHE_SOCKET, "redis-store": STORE_SOCKET}


class NotSeen(AssertionError):
    """Something did not happen within its bound; the message names it."""


class Controls:
    """The controls of one device, by its instance; the device may run under another driver.

    Borrows: the instance.
    Threads: any.
    Errors:  ControlError when the device does not run or refuses; DescriptionError for records
             that cannot be. Orders, knobs, markers and records need no running device.
    """

    def __init__(self, instance: Instance) -> None:
        self.instance = instance

    # What the services do.

    def order(self, service: str, *steps: str) -> None:
        """Tells a service ("pictor") how to answer: one step per ping, the last one for ever."""
        self.instance.write(f"{ORDERS}/{SERVICES[service].name}", "\n".join(steps) + "\n")

    def knob(self, script: str, action: str, *lines: str) -> None:
        """Makes an action of an init script "delay MS" or "fail STATUS"; no lines: as built."""
        if script not in SCRIPTS:
            raise DescriptionError(f"no script is called '{script}': use {' '.join(SCRIPTS)}")
        place = f"{KNOBS}/{script}.{action}"
        if lines:
            self.instance.write(place, "\n".join(lines) + "\n")
        else:
            self.instance.remove(place)

    # What the device is.

    def developer(self, on: bool, marker: str = DEVELOPER_MARKERS[0]) -> None:
        """Sets or removes developer mode's marker; the supervisor looks when it starts."""
        if on:
            self.instance.write(marker, "")
        else:
            for path in DEVELOPER_MARKERS:
                self.instance.remove(path)

    @property
    def eeproms(self) -> I2cTree:
        """The EEPROMs' files, for what the calls below do not offer."""
        return I2cTree(self.instance.path("/sys"))

    def write_eeprom(self, record: Record) -> None:
        """Replaces one module's record; the supervisor looks when it starts."""
        self.eeproms.put(record.device, record.image())

    def damage_eeprom(self, letter: str, kind: str = "crc") -> None:
        """Spoils the record of a letter in one way (eeprom.DAMAGES), or takes it off: "gone"."""
        device = eeprom.DEVICE_OF_LETTER.get(letter)
        image = self.eeproms.content(device) if device else None
        if device is None or image is None:
            raise DescriptionError(f"there is no EEPROM with the letter '{letter}' to damage")
        if kind == "gone":
            self.eeproms.remove(device)
        else:
            self.eeproms.put(device, eeprom.damaged(image, kind))

    # What happens to its parts.

    def bus(self, action: str) -> None:
        """start, stop, restart, hang or continue the bus; back when done."""
        self._server("bus", action)

    def redis(self, action: str, which: Sequence[str] = tuple(REDIS_SOCKETS)) -> None:
        """The same for the Redis servers: "redis-cache" (records), "redis-store" (settings)."""
        for server in which:
            self._server(server, action)

    def supervisor(self, action: str) -> None:
        """kill, stop or continue the daemon, or start it again; the watchdog goes on counting."""
        if action == "start":
            control.ask(self.instance, deed="start-supervisor")
        else:
            self.signal("wardex", action)

    def signal(self, program: str, action: str) -> None:
        """kill, stop or continue every process of this name."""
        control.ask(self.instance, deed="signal", program=program, action=action)

    def reboot(self) -> None:
        """Reboots as the supervisor would; the next boot may not have begun when this returns."""
        try:
            self.run("reboot")
        except control.WentDown:
            pass

    def run(self, *words: str, bound: float = 20.0) -> tuple[int, str]:
        """Runs a program on the device as root: its exit status and all its output."""
        answer = control.ask(
            self.instance, timeout=bound + 5.0, deed="run", words=words, bound=bound
        )
        return int(answer["status"]), str(answer["output"])

    # What can be seen.

    def log(self, name: str) -> Path:
        """A journal: scripts, pings, watchdog, syslog, bus, records, boots, wardex.out, wardex.err."""
        return self.instance.path(f"{LOGS}/{name}")

    def lines(self, name: str) -> list[str]:
        """The complete lines of a journal so far; none while it does not exist."""
        text = self.instance.read(f"{LOGS}/{name}")
        return text[: text.rfind("\n") + 1].splitlines()

    def connect_redis(self, server: str = "redis-cache") -> RedisClient:
        """A connection of the caller's own to one of the device's Redis servers."""
        with self.instance.socket_address(REDIS_SOCKETS[server]) as address:
            return RedisClient(address)

    def wait_for(
        self, condition: Callable[[], Any], bound: float, what: str, step: float = 0.01
    ) -> Any:
        """Answers what the condition answers once that is true; NotSeen after `bound` seconds."""
        begin = now()
        answer: Optional[Any] = poll(condition, bound, step)
        if not answer:
            raise NotSeen(f"not seen within {now() - begin:.1f} s: {what}")
        return answer

    def _server(self, name: str, action: str) -> None:
        control.ask(self.instance, deed="server", server=name, action=action)
