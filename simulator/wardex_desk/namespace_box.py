"""The box made of private namespaces, by bubblewrap."""

import json
import os
import signal
import subprocess
from dataclasses import dataclass
from pathlib import Path
from typing import Mapping, Optional, Sequence

from wardex_desk.box import BOOT_PROGRAM, Box, BoxError, Programs, device_environment, exit_status
from wardex_desk.instance import Instance
from wardex_desk.places import CONSOLE, DESK, PANIC_SETTING, SIMULATOR, WATCHDOG_NODE

DEVICE_FOLDERS = ("/etc", "/opt", "/run", "/tmp", "/sys", "/var", "/root", "/log")
NAMESPACES = ("--unshare-pid", "--unshare-net", "--unshare-ipc", "--unshare-uts")
# Root inside, whoever stands outside: the bus policy lets only root own the supervisor's name.
ROOT_INSIDE = ("--unshare-user", "--uid", "0", "--gid", "0")


@dataclass(frozen=True)
class Layout:
    """What is shown where in the box.

    user_namespace: False only for a root who needs none and keeps the real-time duties.
    """

    folder: Path
    programs: Programs
    user_namespace: bool
    environment: Mapping[str, str]

    def options(self) -> list[str]:
        """bubblewrap's options. Order counts: what is bound over /dev or /proc comes after them."""
        return [
            *NAMESPACES,
            *(ROOT_INSIDE if self.user_namespace else ()),
            *("--new-session", "--die-with-parent", "--hostname", "camera"),
            *("--ro-bind", "/usr", "/usr"),
            *(word for part in ("bin", "sbin", "lib", "lib64") for word in self._merged(part)),
            *("--proc", "/proc", "--dev", "/dev"),
            *(word for path in DEVICE_FOLDERS for word in self._own("--bind", path)),
            *("--ro-bind-try", "/etc/alternatives", "/etc/alternatives"),
            *("--ro-bind-try", "/etc/ld.so.cache", "/etc/ld.so.cache"),
            *("--ro-bind", str(SIMULATOR), f"{DESK}/simulator"),
            *("--ro-bind", str(self.programs.peers), f"{DESK}/bin"),
            *("--ro-bind", str(self.programs.supervisor), f"{DESK}/wardex"),
            *self._counts(),
            *self._own("--bind-try", WATCHDOG_NODE),
            *self._own("--bind", PANIC_SETTING),
            *("--clearenv", "--chdir", "/"),
            *(word for item in self.environment.items() for word in ("--setenv", *item)),
        ]

    def _own(self, option: str, path: str) -> tuple[str, str, str]:
        return (option, str(self.folder / path.lstrip("/")), path)

    def _counts(self) -> tuple[str, ...]:
        """Where the programs of a build for coverage count, by the path that they were built with."""
        counts = self.programs.peers.absolute().parent / "counts"
        return ("--bind", str(counts), str(counts)) if counts.is_dir() else ()

    def _merged(self, part: str) -> tuple[str, ...]:
        if (self.folder / part).is_dir():
            return self._own("--bind", f"/{part}")
        return ("--symlink", f"usr/{part}", f"/{part}") if Path(f"/usr/{part}").is_dir() else ()


def _attempt(options: Sequence[str]) -> Optional[str]:
    """Why bubblewrap cannot make a box with these options; None when it can."""
    try:
        outcome = subprocess.run(
            ["bwrap", *NAMESPACES, *options, "--ro-bind", "/", "/", "--proc", "/proc", "true"],
            capture_output=True,
            text=True,
        )
    except FileNotFoundError:
        return "bubblewrap is not installed (packaging/install-packages run)"
    return None if outcome.returncode == 0 else outcome.stderr.strip()


class NamespaceBox(Box):
    """A box of private namespaces around an instance folder.

    Errors: BoxError where the kernel refuses namespaces. The panic setting of the host is out of
            reach: the box does not come up without a file of its own over it, and the boot
            program looks again.
    """

    def __init__(self, instance: Instance, programs: Programs) -> None:
        programs.check()
        self._instance = instance
        self._programs = programs
        self._user_namespace = os.getuid() != 0
        reason = _attempt(ROOT_INSIDE if self._user_namespace else ())
        if reason is not None and not self._user_namespace:
            self._user_namespace = True
            reason = _attempt(ROOT_INSIDE)
        if reason is not None:
            raise BoxError(f"this machine offers no namespaces: {reason}")
        self._process: Optional["subprocess.Popen[bytes]"] = None
        self._first_inside: Optional[int] = None

    def start(self) -> None:
        layout = Layout(
            self._instance.folder, self._programs, self._user_namespace, device_environment()
        )
        reader, writer = os.pipe()
        with open(reader, "rb") as information:
            with open(self._instance.path(CONSOLE), "ab") as console:
                self._process = subprocess.Popen(
                    ["bwrap", "--info-fd", str(writer), *layout.options(), "--", *BOOT_PROGRAM],
                    stdin=subprocess.DEVNULL,
                    stdout=console,
                    stderr=console,
                    pass_fds=(writer,),
                    # Ctrl-C is for the driver, which then ends the box in order.
                    start_new_session=True,
                )
            os.close(writer)
            answer = information.read()
        self._first_inside = json.loads(answer)["child-pid"] if answer.strip() else None

    def wait(self) -> int:
        assert self._process is not None
        status = exit_status(self._process)
        self._first_inside = None
        return status

    def end(self) -> None:
        # The kernel ends the others with the first process, and reports it only when all are gone.
        if self._first_inside is not None:
            try:
                os.kill(self._first_inside, signal.SIGKILL)
            except ProcessLookupError:
                pass

    def give_back(self) -> None:
        pass

    def supervisor_environment(self) -> Mapping[str, str]:
        return {}

    def shortcomings(self) -> Sequence[str]:
        if not self._user_namespace:
            return ()
        return ("not root here: the kernel refuses the supervisor's real-time duties",)
