"""First process of a device that has no process list of its own: python3 -m wardex_desk.reaper.

    reaper TURN FOLDER [watchdog]

lays the device's paths, runs the boot program, buries what its programs leave, and at the end
(the boot program's, or the driver's, which holds the standard input open) takes everything away.
TURN is a descriptor that shows the container as taken for as long as we live.
Exit status: the boot program's.
"""

import ctypes
import os
import signal
import sys
import threading
from pathlib import Path
from typing import Sequence

from wardex_desk.box import BOOT_PROGRAM, BoxError, device_environment
from wardex_desk.fixed_paths import FixedPaths
from wardex_desk.places import ENDED_REFUSED

PR_SET_CHILD_SUBREAPER = 36


def children() -> list[int]:
    """The processes whose parent we are, by birth or because theirs has ended."""
    found = []
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            fields = (folder / "stat").read_text(errors="replace").rpartition(")")[2].split()
        except (FileNotFoundError, ProcessLookupError):
            continue
        if int(fields[1]) == os.getpid():
            found.append(int(folder.name))
    return found


def bury_until(process: int) -> int:
    """Waits for whatever ends, up to this process; answers its exit status as a shell does."""
    while True:
        ended, status = os.wait()
        if ended == process:
            code = os.waitstatus_to_exitcode(status)
            return 128 - code if code < 0 else code


def end_all() -> None:
    """Ends every descendant: the children of an ended child become ours."""
    while True:
        left = children()
        if not left:
            return
        for process in left:
            os.kill(process, signal.SIGKILL)
        for process in left:
            os.waitpid(process, 0)


def _end_with_driver(process: int) -> None:
    while os.read(0, 4096):
        pass
    try:
        os.kill(process, signal.SIGKILL)
    except ProcessLookupError:
        pass


def main(turn: int, folder: Path, watchdog: bool) -> int:
    """Runs one boot of the device in that instance folder."""
    os.set_inheritable(turn, False)
    ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    paths = FixedPaths(folder)
    try:
        paths.lay(watchdog)
    except BoxError as error:
        print(f"refusing to boot: {error}", file=sys.stderr)
        return ENDED_REFUSED
    nothing = (os.POSIX_SPAWN_OPEN, 0, os.devnull, os.O_RDONLY, 0)
    boot = os.posix_spawn(
        BOOT_PROGRAM[0], BOOT_PROGRAM, device_environment(), file_actions=[nothing]
    )
    threading.Thread(target=_end_with_driver, args=(boot,), daemon=True).start()
    status = bury_until(boot)
    end_all()
    paths.lift()
    return status


def _words(arguments: Sequence[str]) -> tuple[int, Path, bool]:
    return int(arguments[0]), Path(arguments[1]), "watchdog" in arguments[2:]


if __name__ == "__main__":
    status = main(*_words(sys.argv[1:]))
    sys.stderr.flush()
    os._exit(status)
