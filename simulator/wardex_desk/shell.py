"""A person's ways onto the device: ./run sh and ./run ctl."""

import os
import subprocess
from typing import Sequence

from wardex_desk import control
from wardex_desk.box import device_environment
from wardex_desk.ending import interrupts_left_to_programs
from wardex_desk.instance import Instance

INTERACTIVE = "bash --rcfile /opt/orvo/etc/profile"
PERSONS_WISHES = ("NO_COLOR",)
NAMESPACES = ("-m", "-p", "-n", "-i", "-u")


def entering(boot_program: int, words: Sequence[str]) -> list[str]:
    """The command line that runs a program in the box of this process."""
    variables = {
        **device_environment(),
        "TERM": os.environ.get("TERM", "dumb"),
        **{name: os.environ[name] for name in PERSONS_WISHES if name in os.environ},
    }
    inside = ["env", "-i", *(f"{name}={value}" for name, value in variables.items()), *words]
    if _same(boot_program, "pid"):
        return inside
    options = [*NAMESPACES]
    if not _same(boot_program, "user"):
        # The box's root is the user who owns it; only a stranger's number has no meaning inside.
        options += ["-U"] + (["--preserve-credentials"] if _owned(boot_program) else [])
    return ["nsenter", "-t", str(boot_program), *options, "--wdns=/root", "--", *inside]


def open_shell(instance: Instance, words: Sequence[str], on_terminal: bool) -> int:
    """Runs words in a shell on the device, or an interactive one; answers its exit status.

    Raises ControlError when the device does not run.
    """
    if words:
        inside = ["sh", "-c", " ".join(words)]
    elif on_terminal:
        # A terminal of the device's own: jobs can be stopped, and the person's is not listed there.
        inside = ["script", "--quiet", "--return", "--command", INTERACTIVE, "/dev/null"]
    else:
        inside = ["sh"]
    return run_program(instance, inside)


def run_program(instance: Instance, words: Sequence[str]) -> int:
    """Runs a program on the device, on the person's terminal; answers its exit status.

    One that a signal ended answers as in a shell. Raises ControlError when the device does not run.
    """
    with interrupts_left_to_programs():
        status = subprocess.run(entering(control.boot_program(instance), words)).returncode
    return status if status >= 0 else 128 - status


def _owned(process: int) -> bool:
    return os.stat(f"/proc/{process}").st_uid == os.getuid()


def _same(process: int, kind: str) -> bool:
    return os.readlink(f"/proc/{process}/ns/{kind}") == os.readlink(f"/proc/self/ns/{kind}")
