"""Builds what is measured: the release preset, as it ships."""

import fcntl
import subprocess
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
PRESET = "release"
FOLDER = REPOSITORY / "build" / PRESET
DAEMON = FOLDER / "bin/wardex"
PROGRAMS = FOLDER / "bin/bench"
LAST_WORDS = 30


class BuildError(Exception):
    """The build failed; the message has its last words."""


def build() -> None:
    """Builds daemon, drivers and yardsticks."""
    try:
        FOLDER.mkdir(parents=True, exist_ok=True)
        # Two commands at once must not build in one folder.
        with open(FOLDER / ".run-lock", "w", encoding="ascii") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            _build(FOLDER / "bench-build.log")
    except OSError as error:
        raise BuildError(f"cannot build in {FOLDER}: {error}") from error


def _build(log: Path) -> None:
    steps = (
        ["cmake", "--preset", PRESET],
        ["cmake", "--build", "--preset", PRESET, "--target", "benchmarks"],
    )
    with open(log, "wb") as output:
        for step in steps:
            if subprocess.run(step, cwd=REPOSITORY, stdout=output, stderr=output).returncode != 0:
                words = log.read_text(errors="replace").splitlines()[-LAST_WORDS:]
                raise BuildError("\n".join([*words, f"the build failed, see {log}"]))
