"""Where a simulated device lives: closed off from the machine, with all its fixed paths."""

import abc
import subprocess
from dataclasses import dataclass
from pathlib import Path
from typing import Optional

from wardex_desk.places import PEERS


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
    def refused_duties(self) -> Optional[str]:
        """What the supervisor cannot do in this box, in words for a person; None: nothing."""


def exit_status(process: "subprocess.Popen[bytes]") -> int:
    """Waits for a process and answers as a shell does: 128 and the signal if it was killed."""
    status = process.wait()
    return 128 - status if status < 0 else status
