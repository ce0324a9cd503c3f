"""Runs programs so that none of them outlives the measurement."""

import contextlib
import os
import signal
import subprocess
from pathlib import Path
from typing import Iterator, Mapping, Optional, Sequence, Union

from wardex_bench.row import Unmeasured

Word = Union[str, Path]
LAST_WORDS = 10


def _words(command: Sequence[Word]) -> list[str]:
    # A program whose parent is killed, as that of strace, is killed with it.
    return ["setpriv", "--pdeathsig", "KILL", "--", *map(str, command)]


def end(process: "subprocess.Popen[str]", patience: float = 5.0) -> None:
    """Ends a process started here and everything in its session; waits for it."""
    with contextlib.suppress(ProcessLookupError):
        if process.poll() is None:
            process.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(patience)
        os.killpg(process.pid, signal.SIGKILL)
    process.wait()


def start(
    command: Sequence[Word],
    output: Optional[Path] = None,
    environment: Optional[Mapping[str, str]] = None,
) -> "subprocess.Popen[str]":
    """Starts a program in a session of its own; what it says goes to a file, or nowhere.

    The caller ends it with end(). Ctrl-C at the terminal reaches only us, who tidy up.
    """
    with open(output or os.devnull, "wb") as sink:
        return subprocess.Popen(
            _words(command),
            stdin=subprocess.DEVNULL,
            stdout=sink,
            stderr=sink,
            env=environment,
            start_new_session=True,
            text=True,
        )


@contextlib.contextmanager
def running(
    command: Sequence[Word],
    output: Optional[Path] = None,
    environment: Optional[Mapping[str, str]] = None,
) -> Iterator["subprocess.Popen[str]"]:
    """A program that runs in the background as long as the block."""
    process = start(command, output, environment)
    try:
        yield process
    finally:
        end(process)


def run(
    command: Sequence[Word],
    environment: Optional[Mapping[str, str]] = None,
    timeout: float = 120.0,
) -> str:
    """Runs a program to its end; answers what it wrote to standard output.

    Raises Unmeasured with its last words when it fails or takes too long.
    """
    process = subprocess.Popen(
        _words(command),
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        env=environment,
        start_new_session=True,
        text=True,
    )
    try:
        output, errors = process.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        raise Unmeasured(f"{command[0]} did not end within {timeout:g} s") from None
    finally:
        end(process)
    if process.returncode != 0:
        words = "\n".join((output + errors).splitlines()[-LAST_WORDS:])
        raise Unmeasured(f"{command[0]} ended with {process.returncode}: {words}")
    return output
