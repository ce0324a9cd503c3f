"""Where a simulated device lives: closed off from the machine, with all its fixed paths."""

import abc
import os
import subprocess
from dataclasses import dataclass
from pathlib import Path
from typing import Mapping, Sequence

from wardex_desk.places import DESK, PEERS, SHORT_PATH

BOOT_PROGRAM = ("/usr/bin/python3", "-S", "-m", "wardex_desk.boot")
# What the person's own environment may tell the programs inside: how sanitizers report.
PASSED_ON = ("ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS", "TERM")


class BoxError(Exception):
    """No box can be had; the message says why and what to do."""


@dataclass(frozen=True)
class Programs:
    """The built programs that stand on the device.

    peers: folder with the simulated services and the watchdog.
    supervisor: the daemon's executable file, unmodified.
    """

    peers: Path
    supervisor: Path

    def check(self) -> None:
        """Raises BoxError naming the first program that is not there."""
        for path in [self.supervisor, *(self.peers / name for name in PEERS)]:
            if not path.is_file():
                raise BoxError(f"{path} is not built: start with ./run, or build it with cmake")


class Box(abc.ABC):
    """One box for one device; after an end it can be started again.

    Owns:    every process inside; they end with the box, and the box with the driver's thread
             that started it.
    Threads: start() and wait() belong to one thread, which must live as long as the box;
             end() may be called from any.
    """

    @abc.abstractmethod
    def start(self) -> None:
        """Starts the device's boot program in the box and returns at once."""

    @abc.abstractmethod
    def wait(self) -> int:
        """Waits for the boot program's end and for the end of all else in the box.

        Answers its exit status (ENDED_...), or 128 and the signal that killed it.
        """

    @abc.abstractmethod
    def end(self) -> None:
        """Ends everything inside at once, as when the mains plug is pulled."""

    @abc.abstractmethod
    def give_back(self) -> None:
        """Lets others have what the box needs; it is not started again. Idempotent."""

    @abc.abstractmethod
    def supervisor_environment(self) -> Mapping[str, str]:
        """Variables that the supervisor needs to find this box's device."""

    @abc.abstractmethod
    def shortcomings(self) -> Sequence[str]:
        """What cannot be shown in this box, each in words for a person."""


def device_environment() -> dict[str, str]:
    """The variables of every program in a box."""
    return {
        "PATH": SHORT_PATH,
        "HOME": "/root",
        "LANG": "C.UTF-8",
        "PYTHONPATH": f"{DESK}/simulator",
        "PYTHONDONTWRITEBYTECODE": "1",
        # libudev's own switch: without it a /sys of plain files counts as no /sys.
        "SYSTEMD_DEVICE_VERIFY_SYSFS": "0",
        **{name: os.environ[name] for name in PASSED_ON if name in os.environ},
    }


def exit_status(process: "subprocess.Popen[bytes]") -> int:
    """Waits for a process and answers as a shell does: 128 and the signal if it was killed."""
    status = process.wait()
    return 128 - status if status < 0 else status
