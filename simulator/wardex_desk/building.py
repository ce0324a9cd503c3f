"""Builds what stands on the device, if it is not built yet."""

import fcntl
import os
import re
import subprocess
from pathlib import Path
from typing import BinaryIO, Optional, TextIO

from wardex_desk.box import Programs
from wardex_desk.places import PEERS, REPOSITORY
from wardex_desk.waiting import now

LOG_NAME = "run-build.log"
LAST_WORDS = 30
# How ninja begins a line.
PROGRESS = re.compile(rb"\[(\d+)/(\d+)\]")


class BuildError(Exception):
    """The build failed; the message has its last words."""


def programs(preset: str, wardex: Optional[Path], stream: TextIO) -> Programs:
    """Builds supervisor and peers with a preset of CMake, telling the stream in one line.

    With an executable of the person's own only the peers are built. A tree that is not ours to
    write is taken as it stands.
    """
    folder = REPOSITORY / "build" / preset
    built = Programs(folder / "bin", wardex or folder / "bin/wardex")
    writable = folder if folder.is_dir() else REPOSITORY
    if not os.access(writable, os.W_OK):
        print(f"{folder} is not ours to build in: taken as it stands", file=stream)
        return built
    folder.mkdir(parents=True, exist_ok=True)
    # Two commands at once must not build in one folder.
    with open(folder / ".run-lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        _build(preset, folder, [*PEERS] + ([] if wardex else ["wardex"]), stream)
    return built


def _build(preset: str, folder: Path, targets: list[str], stream: TextIO) -> None:
    begin = now()
    log = folder / LOG_NAME
    words = f"Building ({preset})"
    if not (folder / "bin").is_dir():
        words += ", which takes minutes the first time"
    print(f"{words} ...", end="", flush=True, file=stream)
    steps = (
        ["cmake", "--preset", preset],
        ["cmake", "--build", "--preset", preset, "--target", *targets],
    )
    with open(log, "wb") as output:
        for step in steps:
            if not _performed(step, output, words, stream):
                print(" failed", file=stream)
                last = log.read_text(errors="replace").splitlines()[-LAST_WORDS:]
                raise BuildError("\n".join([*last, f"the build failed, see {log}"]))
    print(f" done in {now() - begin:.1f} s", file=stream)


def _performed(step: list[str], output: BinaryIO, words: str, stream: TextIO) -> bool:
    """Whether a step succeeds; a person at a terminal sees how far it is."""
    with subprocess.Popen(
        step, cwd=REPOSITORY, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
    ) as process:
        assert process.stdout is not None
        for line in process.stdout:
            output.write(line)
            progress = PROGRESS.match(line)
            if progress and stream.isatty():
                done, whole = (int(each) for each in progress.groups())
                print(f"\r{words} ... {done} of {whole}", end="", flush=True, file=stream)
    output.flush()
    return process.returncode == 0
