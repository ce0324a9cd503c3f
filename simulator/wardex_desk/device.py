"""A simulated camera device: the controls and the mains plug.

How a scenario uses it (see Controls for all deeds):

    plan = Plan(family="ZK4XX", watchdog_ms=4000)
    with Device(Instance("hang"), plan, Programs(peers, wardex)) as device:
        device.power_on()
        device.order("pictor", "hang")
        device.wait_for(lambda: len(device.boots()) == 2, 60, "the reboot")
"""

import json
import threading
from dataclasses import asdict, dataclass
from types import TracebackType
from typing import Any, Callable, Optional, Sequence

from wardex_desk import firmware
from wardex_desk.box import Box, BoxError, Programs
from wardex_desk.boxes import best_box
from wardex_desk.controls import Controls, NotSeen
from wardex_desk.firmware import Plan
from wardex_desk.instance import Instance
from wardex_desk.places import (
    BOOT_PLAN,
    CONSOLE,
    DESK_STATE,
    ENDED_POWER_OFF,
    ENDED_REBOOT,
    ENDED_WATCHDOG,
    LOGS,
    UP_MARK,
)
from wardex_desk.waiting import now, poll

BOOT_BOUND = 20.0
BOOT_JOURNAL = f"{LOGS}/boots"
BOOTS_AGAIN = {ENDED_REBOOT: "reboot", ENDED_WATCHDOG: "watchdog"}

BoxMaker = Callable[[Instance, Programs], Box]


class DeviceError(Exception):
    """The device does not stand or does not come up; the message has its last words."""


@dataclass(frozen=True)
class BootRecord:
    """One line of /log/boots.

    time: seconds of the monotonic clock; the first one's is the power-on.
    reason: power-on, reboot or watchdog.
    """

    time: float
    reason: str


class Device(Controls):
    """Puts a device on the desk and keeps it there until power_off() or the driver's end.

    A device that reboots, or that its watchdog resets, boots again with /tmp empty and /etc kept.

    Owns:    the instance (claimed here, released by power_off), the box, and one thread that
             starts the box again.
    Threads: power_on and power_off from one thread; the rest from any.
    Errors:  InstanceError, BoxError and DeviceError from the constructor and power_on.
    """

    def __init__(
        self,
        instance: Instance,
        plan: Plan,
        programs: Programs,
        make_box: BoxMaker = best_box,
    ) -> None:
        super().__init__(instance)
        self.plan = plan
        instance.claim()
        try:
            self.family = firmware.install(instance, plan)
            self._box = make_box(instance, programs)
        except BaseException:
            instance.release()
            raise
        words = asdict(plan) | {
            "without": sorted(plan.without),
            "environment": {**self._box.supervisor_environment(), **plan.environment},
        }
        self._boot_plan = json.dumps(words, indent=2) + "\n"
        self._mains: Optional[threading.Thread] = None
        self._lock = threading.Lock()
        self._is_plugged = False
        self._ending: Optional[int] = None

    def __enter__(self) -> "Device":
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.power_off()

    def power_on(self, bound: float = BOOT_BOUND) -> None:
        """Boots the device and waits until its boot program is done, at most `bound` seconds."""
        if self._mains is not None:
            raise DeviceError("the device is on already")
        self._is_plugged = True
        self._mains = threading.Thread(target=self._keep_running, name="mains", daemon=True)
        self._mains.start()
        if not poll(lambda: self.is_up() or self._ending is not None, bound, 0.005):
            raise DeviceError(f"the device is not up within {bound:g} s:\n{self.last_words()}")
        if self._ending is not None:
            raise DeviceError(f"the device did not come up:\n{self.last_words()}")

    def power_off(self) -> None:
        """Ends everything in the box, waits for that, and lets the instance go. Idempotent."""
        with self._lock:
            self._is_plugged = False
            self._box.end()
        if self._mains is not None:
            self._mains.join()
            self._mains = None
        self._box.give_back()
        for folder in ("/tmp", DESK_STATE, "/run/dbus"):
            if self.instance.path(folder).is_dir():
                self.instance.empty(folder)
        self.instance.release()

    def is_up(self) -> bool:
        """Whether the boot program has started all that the plan asks for."""
        return self.instance.path(UP_MARK).exists()

    def is_on(self) -> bool:
        """Whether the device runs or boots; False after power_off and after it gave up."""
        return self._mains is not None and self._mains.is_alive()

    def boots(self) -> list[BootRecord]:
        """All boots since power-on, that one included."""
        fields = (line.split() for line in self.lines("boots"))
        return [BootRecord(float(time), reason) for time, reason in fields]

    def wait_for(
        self, condition: Callable[[], Any], bound: float, what: str, step: float = 0.01
    ) -> Any:
        """As Controls.wait_for, but gives up at once when the device cannot boot any more."""
        answer = super().wait_for(lambda: condition() or not self.is_on(), bound, what, step)
        if answer is True and not self.is_on() and not condition():
            raise NotSeen(f"not seen before the device went down: {what}\n{self.last_words()}")
        return answer

    def shortcomings(self) -> Sequence[str]:
        """What this device cannot show where it stands, each in words for a person."""
        return self._box.shortcomings()

    def last_words(self) -> str:
        """What the boot program said, for a person who must find out why nothing works."""
        return self.instance.read(CONSOLE)[-2000:].strip()

    def _keep_running(self) -> None:
        reason: Optional[str] = "power-on"
        while reason is not None:
            with self._lock:
                if not self._is_plugged:
                    return
                self._prepare_boot(reason)
                try:
                    self._box.start()
                except (BoxError, OSError) as error:
                    self.instance.append(CONSOLE, str(error))
                    self._ending = ENDED_POWER_OFF
                    return
            status = self._box.wait()
            self._ending = status if status not in BOOTS_AGAIN else None
            reason = BOOTS_AGAIN.get(status)

    def _prepare_boot(self, reason: str) -> None:
        """Leaves of the last run what a power cycle leaves: everything but /tmp and /run."""
        self.instance.empty("/tmp")
        self.instance.empty("/run", keep=("orders", "knobs"))
        for folder in (DESK_STATE, "/run/dbus", "/run/udev"):
            self.instance.path(folder).mkdir(parents=True, exist_ok=True)
        self.instance.write(BOOT_PLAN, self._boot_plan)
        self.instance.append(BOOT_JOURNAL, f"{now():.6f} {reason}")
