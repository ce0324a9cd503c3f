"""The box for a machine without namespaces: the container that we are in, if it is one."""

import os
import socket
import subprocess
import sys
from typing import Mapping, Optional, Sequence

from wardex_desk.boot import panic_setting_can_be_written
from wardex_desk.box import Box, BoxError, Programs, device_environment, exit_status
from wardex_desk.fixed_paths import FixedPaths
from wardex_desk.instance import Instance
from wardex_desk.places import CONSOLE, DESK, PANIC_SETTING, SIMULATOR, WATCHDOG_NODE

# The kernel gives the machine's own process list this number; a container has another.
MACHINES_PROCESSES = "pid:[4026531836]"
# Abstract, so that it leaves no file.
TURN = "\0wardex-desk"
PRELOAD = "libumockdev-preload.so.0"


def objection(processes: str, user: int, panic_can_be_written: bool) -> Optional[str]:
    """Why this is no place for a device; None: it is one.

    processes: the name of the process list, as readlink of /proc/self/ns/pid says it.
    """
    if processes == MACHINES_PROCESSES:
        return "this is no container but the machine itself"
    if user != 0:
        return "only root can use the container itself as the box"
    if panic_can_be_written:
        return f"{PANIC_SETTING} can be written here and belongs to the whole machine"
    return None


def _take_turn() -> socket.socket:
    """The sign of the one device in this container: a name that goes with its last holder."""
    turn = socket.socket(socket.AF_UNIX)
    try:
        turn.bind(TURN)
    except OSError:
        turn.close()
        raise BoxError("another device is in this container, which has room for one") from None
    return turn


class ContainerBox(Box):
    """The container itself as the box, for one device at a time.

    /sys cannot be covered there: the supervisor sees the EEPROMs through umockdev's preload.
    Errors: BoxError where this is no container, not root's, or a path is somebody else's.
    """

    def __init__(self, instance: Instance, programs: Programs) -> None:
        programs.check()
        reason = objection(
            os.readlink("/proc/self/ns/pid"), os.getuid(), panic_setting_can_be_written()
        )
        if reason is not None:
            raise BoxError(reason)
        if instance.path("/bin").is_dir():
            raise BoxError("the programs of this container cannot be taken away")
        self._turn: Optional[socket.socket] = _take_turn()
        try:
            FixedPaths(instance.folder).check()
        except BoxError:
            self.give_back()
            raise
        self._instance = instance
        self._process: Optional["subprocess.Popen[bytes]"] = None
        node = instance.path(WATCHDOG_NODE)
        self._watchdog = "watchdog" if node.exists() else ""
        # Out of the preload's sight: the watchdog is a real file in this box.
        node.unlink(missing_ok=True)
        desk = instance.path(DESK)
        desk.mkdir()
        for name, target in (
            ("simulator", SIMULATOR),
            ("bin", programs.peers),
            ("wardex", programs.supervisor),
        ):
            (desk / name).symlink_to(target)

    def start(self) -> None:
        assert self._turn is not None
        # The reaper shares the turn: it may still tidy up when the driver has been killed.
        turn = self._turn.fileno()
        words = [sys.executable, "-S", "-m", "wardex_desk.reaper", str(turn)]
        with open(self._instance.path(CONSOLE), "ab") as console:
            self._process = subprocess.Popen(
                [*words, str(self._instance.folder), self._watchdog],
                # Its end of file is how the reaper learns that nobody wants the device any more.
                stdin=subprocess.PIPE,
                stdout=console,
                stderr=console,
                cwd="/",
                env=device_environment() | {"PYTHONPATH": str(SIMULATOR)},
                start_new_session=True,
                pass_fds=(turn,),
            )

    def wait(self) -> int:
        assert self._process is not None
        return exit_status(self._process)

    def end(self) -> None:
        if self._process is not None and self._process.stdin is not None:
            self._process.stdin.close()

    def give_back(self) -> None:
        if self._turn is not None:
            self._turn.close()
            self._turn = None

    def supervisor_environment(self) -> Mapping[str, str]:
        sanitizer = os.environ.get("ASAN_OPTIONS", "")
        return {
            "LD_PRELOAD": PRELOAD,
            "UMOCKDEV_DIR": str(self._instance.folder),
            "ASAN_OPTIONS": ":".join(filter(None, (sanitizer, "verify_asan_link_order=0"))),
        }

    def shortcomings(self) -> Sequence[str]:
        return (
            "no namespaces here: this container itself is the box, for one device at a time",
            "/tmp is not emptied by a reboot: other programs' files are in it",
            "the panic setting is not shown: the supervisor's change of it is refused here",
            "the real-time duties are done or refused as this container's rights allow",
        )
