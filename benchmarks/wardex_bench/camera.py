"""The simulated device as the place of a measurement: the daemon's own paths, bus and services."""

import contextlib
import os
import shutil
from pathlib import Path
from typing import Iterator, Sequence

from wardex_desk.box import BoxError, Programs
from wardex_desk.control import ControlError
from wardex_desk.controls import NotSeen
from wardex_desk.device import Device, DeviceError
from wardex_desk.firmware import Plan
from wardex_desk.instance import Instance, InstanceError
from wardex_desk.namespace_box import NamespaceBox
from wardex_desk.places import PROGRAMS

from wardex_bench import callgrind
from wardex_bench.row import Context, NotHere, Unmeasured

# Where the measured programs lie, as the device sees it, and what they write.
BENCH = "/opt/orvo/bench"
REPORT = "/tmp/callgrind"
# Every program has the daemon's name: it is part of what is logged and looked up.
PROCESS = "wardex"
SUPERVISOR = f"{PROGRAMS}/{PROCESS}"
BOUND = 60.0
REFUSALS = (ControlError, DeviceError, InstanceError, NotSeen)


@contextlib.contextmanager
def camera(context: Context, without: Sequence[str] = ()) -> Iterator[Device]:
    """A device that logs at the default mask; the caller switches it on, the block's end off."""
    programs = Programs(context.daemon.parent, context.daemon)
    plan = Plan(without=frozenset((*without, "observers")), stored_log_configuration={})
    # What is still to be written to the disk would count as the daemon's private memory.
    os.sync()
    # Others may look into the device's files, as its bus does.
    context.scratch.chmod(0o755)
    try:
        with Device(Instance("camera", context.scratch), plan, programs, NamespaceBox) as device:
            if device.shortcomings():
                raise NotHere("; ".join(device.shortcomings()))
            yield device
    except BoxError as error:
        raise NotHere(str(error)) from error
    except REFUSALS as error:
        raise Unmeasured(str(error)) from error


def install(device: Device, folder: str, program: Path) -> str:
    """Puts a program on the device, under the daemon's name; answers its path there."""
    inside = f"{BENCH}/{folder}/{PROCESS}"
    place = device.instance.path(inside)
    place.parent.mkdir(parents=True, exist_ok=True)
    shutil.copy(program, place)
    return inside


def run(device: Device, *words: str) -> str:
    """Runs a program on the device; answers what it said."""
    status, output = device.run(*words, bound=BOUND)
    if status != 0:
        raise Unmeasured(f"{words[0]} ended with {status} on the device: {output[-500:]}")
    return output


def process(device: Device, name: str = PROCESS) -> int:
    """The process id of a program on the device."""
    return int(run(device, "ps", "-C", name, "-o", "pid="))


def await_pings(device: Device, count: int) -> None:
    """Waits until the service that is pinged once a second has been pinged so many times."""

    def pinged() -> bool:
        return sum(line.split()[1] == "pictor" for line in device.lines("pings")) >= count

    device.wait_for(pinged, BOUND, f"{count} pings")


class Profile:
    """A program that runs on the device below callgrind.

    Its part of the device's files, by name, keeps several apart.
    """

    def __init__(self, device: Device, name: str, options: Sequence[str] = ()) -> None:
        self._device = device
        self._report = f"{REPORT}.{name}"
        self._process = f"/tmp/{name}.pid"
        self._dumps = 0
        self._valgrind = (
            *("valgrind", "--tool=callgrind", "--quiet", *options),
            f"--callgrind-out-file={self._report}",
        )

    def script(self, *command: str) -> str:
        """The shell script that is the program."""
        words = " ".join((*self._valgrind, *command))
        return f"#!/bin/sh\necho $$ >{self._process}\nexec {words}\n"

    def start(self, *command: str) -> None:
        """Runs it, until the device is off at the latest."""
        place = f"{BENCH}/{Path(self._report).name}.sh"
        self._device.instance.write(place, self.script(*command), mode=0o755)
        run(self._device, "sh", "-c", f"setsid {place} </dev/null >{self._report}.out 2>&1 &")

    def dump(self) -> None:
        """Ends a part of the report here."""
        process = self._device.instance.read(self._process).strip()
        run(self._device, "vgdb", f"--pid={process}", "dump")

    def instructions(self) -> int:
        """Those of the next part of the report, when it is complete."""
        self._dumps += 1
        part = self._device.instance.path(f"{self._report}.{self._dumps}")
        self._device.wait_for(
            lambda: callgrind.is_complete(part), BOUND, f"callgrind's {part.name}"
        )
        return callgrind.total(part.read_text(encoding="utf-8"))
