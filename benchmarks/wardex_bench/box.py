"""A private box for programs that use fixed paths of the machine, as /dev/log."""

import functools
import subprocess
from typing import Sequence

from wardex_bench.building import REPOSITORY
from wardex_bench.processes import Word
from wardex_bench.row import Context, NotHere

NAMESPACES = ("--unshare-pid", "--unshare-net", "--unshare-ipc")


@functools.lru_cache(maxsize=None)
def _refusal() -> str:
    """Why there are no boxes on this machine; empty when there are."""
    outcome = subprocess.run(
        ["bwrap", *NAMESPACES, "--ro-bind", "/", "/", "true"], capture_output=True, text=True
    )
    return outcome.stderr.strip() if outcome.returncode else ""


def boxed(context: Context, command: Sequence[Word]) -> list[Word]:
    """The command in a box: /dev, /tmp, /run and the process list are its own and empty.

    Everything inside ends with the command. The row's scratch folder is shared with us.
    """
    if _refusal():
        raise NotHere(f"this machine offers no namespaces: {_refusal()}")
    return [
        *("bwrap", *NAMESPACES, "--new-session", "--die-with-parent"),
        *("--ro-bind", "/", "/", "--proc", "/proc", "--dev", "/dev"),
        *("--tmpfs", "/tmp", "--tmpfs", "/run", "--ro-bind", f"{REPOSITORY}", f"{REPOSITORY}"),
        *("--bind", f"{context.scratch}", f"{context.scratch}", "--", *command),
    ]
