"""What a scenario of the board is, and how one is played and judged."""

from __future__ import annotations

import os
import secrets
import shutil
import traceback
from collections.abc import Callable, Iterator, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field
from pathlib import Path
from threading import Event

from wardex_board import machine
from wardex_board.cpio import Archive
from wardex_board.images import Images
from wardex_board.machine import OUT_OF_TIME, PANIC, Plan, Run
from wardex_board.qmp import QmpError
from wardex_board.report import BEGIN, Life, lives, parse
from wardex_desk import families
from wardex_desk.judge import EVIDENCE_LINES, Verdict
from wardex_desk.places import SERVICES

Lives = Mapping[str, list[Life]]
# Words that come often, and tell a person nothing.
QUIET = ("record", "feed", "script", "alive", "without")


@dataclass(frozen=True)
class Part:
    """One run of the board.

    script:  the guest's part, `scenario.SCRIPT` in the folder guest.
    lives:   after how many ends the board is switched off.
    limit_s: of this machine's time; generous, as the machine may be busy.
    files:   further files on the board.
    watchdog: arguments of the watchdog's driver.
    writes:  address -> the record that the board itself leaves there; all others stay as they are.
    """

    script: str
    lives: int
    limit_s: float
    eeproms: Mapping[int, bytes]
    shift: int = machine.SHIFT
    watchdog: str = "timeout=10"
    files: Mapping[str, bytes] = field(default_factory=dict)
    writes: Mapping[int, bytes] = field(default_factory=dict)


@dataclass(frozen=True)
class Scenario:
    """A story of the board: its runs, and the verdict on what they told."""

    name: str
    summary: str
    parts: Mapping[str, Part]
    judge: Callable[[Verdict, Lives], None]


def eeproms_of(family: str) -> dict[int, bytes]:
    """Address on I2C bus 2 -> record, of a family's modules."""
    records = families.load(family).records
    return {int(record.device.rpartition("-")[2], 16): record.image() for record in records}


@dataclass
class Stage:
    """Where scenarios are played: the product, the board's parts and who is told.

    Threads: each run has one of its own; `tell` is called from all of them.
    """

    images: Images
    product: Path
    folder: Path
    tell: Callable[[str], None]
    over: Event = field(default_factory=Event)

    def perform(
        self, scenarios: Sequence[Scenario], at_once: int
    ) -> Iterator[tuple[Scenario, Verdict, Lives]]:
        """Plays all runs, several at once and the longest first; judges the scenarios in their order."""
        wanted = [(story, part) for story in scenarios for part in story.parts]
        wanted.sort(key=lambda one: -one[0].parts[one[1]].limit_s)
        with ThreadPoolExecutor(at_once) as pool:
            try:
                runs = {
                    (story.name, part): pool.submit(self._play, story, part)
                    for story, part in wanted
                }
                for story in scenarios:
                    told = {part: runs[story.name, part].result() for part in story.parts}
                    yield story, *_judged(story, told)
            except BaseException:
                self.over.set()
                pool.shutdown(cancel_futures=True)
                raise

    def _play(self, story: Scenario, name: str) -> Played:
        """A run that cannot go on fails its own scenario, and no other."""
        folder = self.folder / story.name / name
        nonce = secrets.token_hex(8)
        try:
            return Played(self._run(story, name, folder, nonce), nonce)
        except (QmpError, OSError) as error:
            return Played(Run(folder), nonce, str(error) or repr(error))

    def _run(self, story: Scenario, name: str, folder: Path, nonce: str) -> Run:
        folder.mkdir(parents=True)
        part = story.parts[name]
        plan = Plan(
            eeproms={**machine.notebook(), **part.eeproms},
            lives=part.lives,
            limit_s=part.limit_s,
            shift=part.shift,
            words=words(nonce, part.script, part.watchdog),
        )
        over = folder / "over.cpio"
        with open(over, "wb") as stream:
            archive = Archive(stream)
            for path, content in part.files.items():
                archive.file(path, content)
            archive.close()
        machine.prepare(folder, self.images, plan, [self.product, over])

        def tell(text: str) -> None:
            line = parse(text, nonce)
            if line is not None and line.word not in QUIET:
                told = f"{story.name}, {name}: {line.word} {line.text}".rstrip()
                self.tell(f"{told} (board: {line.at:.2f} s)")

        self.tell(f"{story.name}, {name}: the board boots")
        return machine.play(folder, self.images, plan, tell, self.over)


@dataclass(frozen=True)
class Played:
    """A run, the nonce that its own report carries, and why it could not go on."""

    run: Run
    nonce: str
    trouble: str = ""

    @property
    def lives(self) -> list[Life]:
        """What the board told, life by life."""
        return lives(self.run.report, self.nonce, self.run.ends)


def _judged(story: Scenario, played: Mapping[str, Played]) -> tuple[Verdict, Lives]:
    verdict = Verdict()
    told = {name: one.lives for name, one in played.items()}
    for name, one in played.items():
        _judge_run(verdict, name, story.parts[name], one)
    try:
        story.judge(verdict, told)
    # A board that says something unforeseen must not take the other scenarios' verdicts along.
    except Exception:
        words = traceback.format_exc().splitlines()
        verdict.claim("what the board told can be judged", False, words[-EVIDENCE_LINES:])
    return verdict, told


def _judge_run(verdict: Verdict, name: str, part: Part, played: Played) -> None:
    """What holds for every run, whatever it shows."""
    run = played.run
    seen = [f"see {run.folder}", *run.emulator[-3:], *run.console[-5:]]
    if played.trouble:
        verdict.claim(f"{name}: the emulator does its work", False, [played.trouble, *seen])
    if OUT_OF_TIME in run.ends:
        verdict.claim(
            f"{name}: the run ends within {part.limit_s:.0f} s of this machine", False, seen
        )
    for life in played.lives:
        for complaint in life.texts("failed"):
            verdict.claim(f"{name}: boot {life.number} goes well", False, [complaint])
        for text in life.senseless():
            verdict.claim(f"{name}: boot {life.number}: every record makes sense", False, [text])
    verdict.equal(
        f"{name}: the board counts its boots from 1 to {part.lives}",
        [str(number + 1) for number in range(part.lives)],
        [life.text(BEGIN) for life in played.lives],
    )
    verdict.equal(
        f"{name}: the kernel never panics", [], [line for line in run.console if PANIC in line]
    )
    if not played.trouble:
        _judge_modules(verdict, name, part, run)


def _judge_modules(verdict: Verdict, name: str, part: Part, run: Run) -> None:
    """Who writes to a module on the board writes to the part; and nobody else does."""
    wanted = {**part.eeproms, **part.writes}
    wrong = [f"2-00{place:02x}" for place in wanted if run.eeprom(place) != wanted[place]]
    verdict.equal(
        f"{name}: in the end the modules hold what the board "
        + ("has written" if part.writes else "was made with"),
        [],
        wrong,
    )


def words(nonce: str, script: str, watchdog: str) -> dict[str, str]:
    """What the board's own scripts are told, over the kernel's command line."""
    return {
        "board.nonce": nonce,
        "board.scenario": script,
        "board.watchdog": watchdog,
        "board.services": ",".join(SERVICES),
    }


def folder_for(home: Path) -> Path:
    """A folder of this process's own for runs, so that two commands do not meet.

    Those of commands that were killed are taken away: each may hold a whole root.
    """
    for former in home.glob("run.*"):
        if not Path("/proc", former.suffix.lstrip(".")).exists():
            shutil.rmtree(former, ignore_errors=True)
    folder = home / f"run.{os.getpid()}"
    folder.mkdir(parents=True, exist_ok=True)
    return folder
