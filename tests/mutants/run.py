#!/usr/bin/python3
"""Breaks the product one line at a time, and shows that a test goes red for each.

    run.py [--only PATTERN]... [--jobs N] [--work FOLDER] [--list] [--check]

The mutants are declared in the TOML files beside this program: each is a line of a file, what it is
changed to (nothing: the line goes), the tests that must see it as a regular expression of ctest
that begins with their program, and what would happen on the device.

Works in copies of the tree and never in the tree itself. The tests must be green on the unchanged
copy first. Then each mutant is built alone with the one program that needs it, and the program's
named tests run. A mutant that hangs them is killed by ctest's time-out, and named so.

--only     mutants whose name or file matches, as of a shell; may be repeated
--jobs     copies to work in at a time (2)
--work     keeps the copies and their builds in this folder, for the next run
--list     prints the mutants
--check    only shows that each mutant still fits the tree

Exit status: 0 when every mutant was killed, 1 when one survived, did not fit or did not build, or
when a test was red without any; 2 wrong words.
"""

import argparse
import contextlib
import fnmatch
import os
import queue
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import tomllib
from collections import Counter, defaultdict
from dataclasses import dataclass
from pathlib import Path
from typing import Iterator

ROOT = Path(__file__).resolve().parents[2]
DECLARATIONS = Path(__file__).resolve().parent
FIELDS = ("name", "file", "old", "new", "tests", "why")
# Programs whose tests have another name in front.
PROGRAMS = {"model": "wardex_model"}
KILLED, KILLED_BY_TIME, SURVIVED, ERROR = "killed", "killed by time-out", "SURVIVED", "ERROR"

# In ctest's summary: "	  3 - logger_unit_tests/LogRecord.NamesEachLevel (Failed)".
NOT_PASSED = re.compile(r"^\t\s*\d+ - (.+) \((.+)\)", re.MULTILINE)


class Trouble(Exception):
    """What keeps a mutant from being judged."""


@dataclass(frozen=True)
class Mutant:
    name: str
    file: str
    old: str
    new: str
    tests: str
    why: str

    @property
    def program(self) -> str:
        """The target that holds the tests."""
        first, slash, rest = self.tests.partition("/")
        if not slash or not re.fullmatch(r"\w+", first):
            raise Trouble(f"{self.name}: '{self.tests}' does not begin with a program")
        if first == "fuzz":
            return rest.removesuffix("$").removesuffix("_corpus") + "_fuzz"
        return PROGRAMS.get(first, first)

    @property
    def room(self) -> str:
        parts = Path(self.file).parts
        depth = {"src": 4, "tools": 2}.get(parts[0], 1)
        return "/".join(parts[:depth])

    def place(self, text: str) -> tuple[int, str]:
        """The number of the line to change, from 0, and what takes its place."""
        lines = text.split("\n")
        found = [number for number, line in enumerate(lines) if line.strip() == self.old]
        if len(found) != 1:
            count = f"stands there {len(found)} times" if found else "is not there"
            raise Trouble(f"{self.name}: {self.file}: the old line {count}: {self.old}")
        line = lines[found[0]]
        return found[0], line[: len(line) - len(line.lstrip())] + self.new if self.new else ""

    def applied(self, text: str) -> str:
        number, line = self.place(text)
        lines = text.split("\n")
        lines[number] = line
        return "\n".join(lines)


@dataclass
class Result:
    mutant: Mutant
    verdict: str
    detail: str
    seconds: float


def declared() -> list[Mutant]:
    mutants = []
    for path in sorted(DECLARATIONS.glob("*.toml")):
        for entry in tomllib.loads(path.read_text(encoding="utf-8"))["mutant"]:
            if sorted(entry) != sorted(FIELDS):
                raise Trouble(f"{path.name}: {entry.get('name')}: fields are {', '.join(FIELDS)}")
            mutants.append(Mutant(**entry))
    return mutants


def complaints(mutants: list[Mutant], root: Path) -> list[str]:
    """Why the declarations do not fit the tree."""
    found = [
        f"{name}: is declared {count} times"
        for name, count in Counter(mutant.name for mutant in mutants).items()
        if count > 1
    ]
    builds = "\n".join(
        path.read_text(encoding="utf-8") for path in root.glob("tests/**/CMakeLists.txt")
    )
    for mutant in mutants:
        try:
            mutant.place((root / mutant.file).read_text(encoding="utf-8"))
            if mutant.old == mutant.new or not mutant.why:
                raise Trouble(f"{mutant.name}: changes nothing, or does not tell why it matters")
            name = mutant.program.removesuffix("_fuzz")
            if not re.search(rf"\({re.escape(name)}\b", builds):
                raise Trouble(f"{mutant.name}: there is no test program {mutant.program}")
        except OSError as error:
            found.append(f"{mutant.name}: {mutant.file}: {error.strerror}")
        except Trouble as trouble:
            found.append(str(trouble))
    return found


def not_passed(summary: str) -> list[tuple[str, str]]:
    return [(name.split("  # ")[0], end) for name, end in NOT_PASSED.findall(summary)]


class Copy:
    """A copy of the tree with a build of its own."""

    def __init__(self, folder: Path) -> None:
        self.tree = folder / "tree"
        self.build = self.tree / "build/dev"
        # The copies share what the compiler cache knows of the tree.
        self.environment = os.environ | {"CCACHE_BASEDIR": str(self.tree), "CCACHE_NOHASHDIR": "1"}

    def fill(self) -> None:
        listing = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=ROOT,
            check=True,
            capture_output=True,
            text=True,
        )
        for name in listing.stdout.rstrip("\0").split("\0"):
            source, target = ROOT / name, self.tree / name
            if not source.is_file():
                continue
            if target.is_file() and target.read_bytes() == source.read_bytes():
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)

    def configure(self) -> None:
        launcher = [f"-DCMAKE_{each}_COMPILER_LAUNCHER=ccache" for each in ("C", "CXX")]
        words = ["cmake", "--preset", "dev", "-DWARDEX_BUILD_SIMULATOR=OFF"]
        self.run(words + (launcher if shutil.which("ccache") else []), "cannot be configured")

    def make(self, program: str) -> None:
        words = ["cmake", "--build", self.build, "--target", program, "--", f"-j{os.cpu_count()}"]
        self.run(words, "does not build")

    def run(self, words: list, claim: str) -> None:
        done = subprocess.run(
            words,
            cwd=self.tree,
            env=self.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
        )
        if done.returncode != 0:
            told = [line for line in done.stdout.splitlines() if "error:" in line]
            raise Trouble(f"{claim}: {(told or done.stdout.splitlines() or ['?'])[0].strip()}")

    def test(self, patterns: list[str], *options: str) -> list[tuple[str, str]]:
        """The tests that did not pass, and what became of each."""
        words = ["ctest", "--test-dir", self.build, "--no-tests=error", "-j", "4"]
        done = subprocess.run(
            [*words, *options, "-R", f"^({'|'.join(patterns)})"],
            cwd=self.tree,
            env=self.environment,
            capture_output=True,
            text=True,
        )
        found = not_passed(done.stdout)
        if done.returncode != 0 and not found:
            raise Trouble(f"no test is called {' or '.join(patterns)}")
        return found

    @contextlib.contextmanager
    def changed(self, mutant: Mutant) -> Iterator[None]:
        path = self.tree / mutant.file
        whole = path.read_text(encoding="utf-8")
        path.write_text(mutant.applied(whole), encoding="utf-8")
        try:
            yield
        finally:
            path.write_text(whole, encoding="utf-8")


def judge(copy: Copy, mutant: Mutant) -> tuple[str, str]:
    with copy.changed(mutant):
        copy.make(mutant.program)
        failures = copy.test([mutant.tests], "--stop-on-failure")
    unable = [f"{name}: {end}" for name, end in failures if end in ("Not Run", "Skipped")]
    if unable:
        raise Trouble(unable[0])
    if not failures:
        return SURVIVED, f"{mutant.tests} stayed green"
    told = [name for name, end in failures if end != "Timeout"]
    return (KILLED, told[0]) if told else (KILLED_BY_TIME, failures[0][0])


class Hunt:
    """Takes the mutants of one test program after the other."""

    def __init__(self, mutants: list[Mutant]) -> None:
        groups = defaultdict(list)
        for mutant in mutants:
            groups[mutant.program].append(mutant)
        self.total = len(mutants)
        self.results: list[Result] = []
        self.lock = threading.Lock()
        self.queue: queue.SimpleQueue[list[Mutant]] = queue.SimpleQueue()
        for group in sorted(groups.values(), key=len, reverse=True):
            self.queue.put(group)

    def tell(self, mutant: Mutant, verdict: str, detail: str, seconds: float) -> None:
        with self.lock:
            self.results.append(Result(mutant, verdict, detail, seconds))
            count = f"[{len(self.results)}/{self.total}]"
            print(f"{count} {verdict}: {mutant.name} ({seconds:.0f} s) {detail}", flush=True)

    def work(self, copy: Copy) -> None:
        reason = None
        try:
            copy.fill()
            copy.configure()
        except (Trouble, OSError) as trouble:
            reason = str(trouble)
        with contextlib.suppress(queue.Empty):
            while True:
                group = self.queue.get_nowait()
                if reason is None:
                    self.take(copy, group)
                else:
                    for mutant in group:
                        self.tell(mutant, ERROR, reason, 0)

    def take(self, copy: Copy, group: list[Mutant]) -> None:
        try:
            copy.make(group[0].program)
            red = copy.test(sorted({mutant.tests for mutant in group}))
            reason = f"without any mutant {red[0][0]}: {red[0][1]}" if red else ""
        except Trouble as trouble:
            reason = f"without any mutant {trouble}"
        for mutant in group:
            begin = time.monotonic()
            try:
                verdict, detail = (ERROR, reason) if reason else judge(copy, mutant)
            except Trouble as trouble:
                verdict, detail = ERROR, str(trouble)
            self.tell(mutant, verdict, detail, time.monotonic() - begin)


def table(results: list[Result], seconds: float) -> None:
    results = sorted(results, key=lambda each: (each.mutant.room, each.mutant.name))
    width = max(len(each.mutant.name) for each in results)
    print()
    for each in results:
        print(f"{each.mutant.name:{width}}  {each.verdict:{len(KILLED_BY_TIME)}}  {each.detail}")
    print()
    rooms = sorted({each.mutant.room for each in results})
    for room in rooms:
        verdicts = Counter(each.verdict for each in results if each.mutant.room == room)
        killed = verdicts[KILLED] + verdicts[KILLED_BY_TIME]
        print(f"{room:28} {killed:3} of {verdicts.total():3} killed")
    verdicts = Counter(each.verdict for each in results)
    print(
        f"\nmutants: {len(results)}; killed: {verdicts[KILLED] + verdicts[KILLED_BY_TIME]}"
        f" (by time-out: {verdicts[KILLED_BY_TIME]}); survived: {verdicts[SURVIVED]};"
        f" errors: {verdicts[ERROR]}; {seconds / 60:.0f} min"
    )


def hunt(mutants: list[Mutant], jobs: int, folder: Path) -> int:
    begin = time.monotonic()
    chase = Hunt(mutants)
    workers = [
        threading.Thread(target=chase.work, args=(Copy(folder / str(number)),), daemon=True)
        for number in range(jobs)
    ]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    table(chase.results, time.monotonic() - begin)
    return 0 if all(each.verdict in (KILLED, KILLED_BY_TIME) for each in chase.results) else 1


def main() -> int:
    parser = argparse.ArgumentParser(
        description=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        usage="run.py ...",
    )
    parser.add_argument("--only", action="append", metavar="PATTERN", help=argparse.SUPPRESS)
    parser.add_argument("--jobs", type=int, default=2, help=argparse.SUPPRESS)
    parser.add_argument("--work", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--list", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--check", action="store_true", help=argparse.SUPPRESS)
    words = parser.parse_args()
    try:
        mutants = declared()
    except (Trouble, tomllib.TOMLDecodeError) as trouble:
        print(f"mutants: {trouble}")
        return 1
    found = complaints(mutants, ROOT)
    for complaint in found:
        print(f"mutants: {complaint}")
    if found or words.check:
        print(f"mutants: {len(mutants)} declared, {len(found)} do not fit the tree")
        return 1 if found else 0
    chosen = [
        mutant
        for mutant in mutants
        if not words.only
        or any(
            fnmatch.fnmatch(text, each)
            for text in (mutant.name, mutant.file)
            for each in words.only
        )
    ]
    if not chosen or words.jobs < 1:
        parser.error("no mutant is called so, or nobody is to work")
    if words.list:
        for mutant in chosen:
            print(
                f"{mutant.name}: {mutant.why}\n  {mutant.file}\n  - {mutant.old}\n  + {mutant.new}"
            )
        return 0
    if words.work:
        return hunt(chosen, words.jobs, words.work.resolve())
    with tempfile.TemporaryDirectory(prefix="wardex-mutants-") as folder:
        return hunt(chosen, words.jobs, Path(folder))


if __name__ == "__main__":
    sys.exit(main())
