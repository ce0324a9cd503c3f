#!/usr/bin/python3
"""clang-tidy with the checks of .clang-tidy; any finding is an error.

    tidy.py [--build DIR]           the product, the simulator and the benchmarks
    tidy.py [--build DIR] --tests   the tests (their own folder says which checks)
    tidy.py [--build DIR] FILE...   these only

The build must exist: generated headers are included. Files that are compiled alike are looked at
together, as two thirds of the time go into what they all include; files that do not compile together
are looked at one by one.
"""

from __future__ import annotations

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("src", "identification", "logger", "quorl", "simulator", "benchmarks", "tools")
TOGETHER = 10
# The analyzer gives a function up after so many steps; by itself after four times as many, in twice
# the time.
PATHS = "-Xclang -analyzer-config -Xclang max-nodes=50000"
# What tells that a file is not compiled like another one.
OWN = re.compile(r" -o \S+ -c \S+$")
DOES_NOT_COMPILE = "clang-diagnostic-error"


@dataclass(frozen=True)
class Batch:
    """Files with one command; more than one go through a file that includes them."""

    files: tuple[Path, ...]
    directory: str
    command: str

    @property
    def size(self) -> int:
        """What decides which one is first."""
        return sum(path.stat().st_size for path in self.files)

    def single(self) -> list[Batch]:
        """Its files, one by one."""
        return [Batch((path,), self.directory, self.command) for path in self.files]


def batches_of(build: Path, wanted: set[Path], together: int) -> list[Batch]:
    """The wanted files that this build compiles, grouped by how it does."""
    groups: dict[tuple[str, str, str], list[Path]] = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        path = Path(entry["file"])
        if path in wanted:
            wanted.discard(path)
            command = OWN.sub("", entry["command"])
            groups.setdefault((entry["directory"], command, path.suffix), []).append(path)
    found = []
    for (directory, command, _), paths in groups.items():
        paths.sort()
        count = -(-len(paths) // together)
        found += [Batch(tuple(paths[at::count]), directory, command) for at in range(count)]
    return found


def put_together(files: tuple[Path, ...], source: Path) -> list[tuple[Path, int]]:
    """Writes the files into one; answers where each of its lines is from (0-based -> 1-based).

    Not by including them: clang's analyzer passes over what stands in an included file.
    """
    origins = []
    with open(source, "w", encoding="utf-8") as whole:
        for path in files:
            lines = path.read_text(encoding="utf-8").splitlines()
            whole.write("".join(f"{line}\n" for line in lines))
            origins += [(path, number) for number in range(1, len(lines) + 1)]
    return origins


def findings(tool: str, folder: Path, batch: Batch) -> str:
    """What clang-tidy finds in a batch; empty when nothing."""
    own = Path(tempfile.mkdtemp(dir=folder))
    source = batch.files[0]
    origins: list[tuple[Path, int]] = []
    if len(batch.files) > 1:
        source = own / f"batch{source.suffix}"
        origins = put_together(batch.files, source)
    quoted = " ".join(sorted({f"-iquote {path.parent}" for path in batch.files}))
    entry = {
        "directory": batch.directory,
        # Some of GCC's warnings are not clang's.
        "command": f"{batch.command} -Wno-unknown-warning-option {PATHS} {quoted} -c {source}",
        "file": str(source),
    }
    (own / "compile_commands.json").write_text(json.dumps([entry]))
    outcome = subprocess.run(
        ["nice", "-n", "10", tool, "--quiet", "-p", own, source],
        capture_output=True,
        text=True,
        check=False,
    )
    if outcome.returncode == 0:
        return ""
    if origins and DOES_NOT_COMPILE in outcome.stdout:
        return "".join(findings(tool, folder, each) for each in batch.single())

    def origin(place: re.Match[str]) -> str:
        path, number = origins[int(place[1]) - 1]
        return f"{path}:{number}:"

    told = outcome.stdout or outcome.stderr or f"{source}: clang-tidy failed\n"
    return re.sub(rf"{re.escape(str(source))}:(\d+):", origin, told) if origins else told


def tracked(folders: tuple[str, ...]) -> set[Path]:
    """The sources below these folders."""
    listing = ("git", "-C", ROOT, "ls-files", "-z", "--cached", "--others", "--exclude-standard")
    output = subprocess.run([*listing, "--", *folders], stdout=subprocess.PIPE, check=True).stdout
    names = output.decode().split("\0")
    return {ROOT / name for name in names if name.endswith((".c", ".cpp"))}


def main() -> int:
    """Looks at all files and prints what was found."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=Path, default=ROOT / "build/dev", metavar="DIR")
    parser.add_argument("--tests", action="store_true", help="the tests")
    parser.add_argument("files", nargs="*", type=Path, metavar="FILE")
    words = parser.parse_args()
    words.build = words.build.resolve()
    tool = shutil.which("clang-tidy-14") or shutil.which("clang-tidy")
    if tool is None:
        sys.exit("tidy: clang-tidy 14 is missing")
    if not (words.build / "compile_commands.json").is_file():
        sys.exit(f"tidy: no {words.build}/compile_commands.json; build the dev preset first")
    wanted = {path.resolve() for path in words.files}
    if not wanted:
        wanted = tracked(("tests",) if words.tests else FOLDERS)
    batches = batches_of(words.build, wanted, 1 if words.tests else TOGETHER)
    if words.files and wanted:
        sys.exit(f"tidy: the build does not compile {', '.join(map(str, sorted(wanted)))}")
    if not batches:
        sys.exit(f"tidy: {words.build} compiles none of the files")
    # Below the tree: the checks are those of the folder above a file. The largest first, so that the
    # last one running is a small one.
    batches.sort(key=lambda batch: -batch.size)
    with tempfile.TemporaryDirectory(prefix="tidy.", dir=words.build) as folder:
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            found = list(pool.map(lambda batch: findings(tool, Path(folder), batch), batches))
    print(*filter(None, found), sep="", end="")
    print(f"tidy: {sum(len(batch.files) for batch in batches)} files in {len(batches)} batches")
    return 1 if any(found) else 0


if __name__ == "__main__":
    sys.exit(main())
