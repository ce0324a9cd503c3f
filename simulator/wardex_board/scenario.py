"""What a scenario of the board is, and how one is played and judged."""

from __future__ import annotations

import os
import secrets
from collections.abc import Callable, Iterator, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field
from pathlib import Path
from threading import Event

from wardex_board import machine
from wardex_board.cpio import Archive
from wardex_board.images import Images
from wardex_board.machine import OUT_OF_TIME, Plan
from wardex_board.report import Life, lives, parse
from wardex_desk import families
from wardex_desk.judge import Verdict
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
    """

    script: str
    lives: int
    limit_s: float
    eeproms: Mapping[int, bytes]
    shift: int = machine.SHIFT
    watchdog: str = "timeout=10"
    files: Mapping[str, bytes] = field(default_factory=dict)


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
        folder = self.folder / story.name / name
        folder.mkdir(parents=True)
        part = story.parts[name]
        nonce = secrets.token_hex(8)
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
        return Played(machine.play(folder, self.images, plan, tell, self.over), nonce)


@dataclass(frozen=True)
class Played:
    """A run, and the nonce that its own report carries."""

    run: machine.Run
    nonce: str

    @property
    def lives(self) -> list[Life]:
        """What the board told, life by life."""
        return lives(self.run.report, self.nonce, self.run.ends)


def _judged(story: Scenario, played: Mapping[str, Played]) -> tuple[Verdict, Lives]:
    verdict = Verdict()
    told = {name: one.lives for name, one in played.items()}
    for name, one in played.items():
        if OUT_OF_TIME in one.run.ends:
            last = (one.run.folder / "console").read_text(errors="replace").splitlines()[-5:]
            verdict.claim(
                f"{name}: the run ends within {story.parts[name].limit_s:.0f} s of this machine",
                False,
                [f"see {one.run.folder}", *last],
            )
        for life in told[name]:
            for complaint in life.texts("failed"):
                verdict.claim(f"{name}: boot {life.number} goes well", False, [complaint])
    story.judge(verdict, told)
    return verdict, told


def words(nonce: str, script: str, watchdog: str) -> dict[str, str]:
    """What the board's own scripts are told, over the kernel's command line."""
    return {
        "board.nonce": nonce,
        "board.scenario": script,
        "board.watchdog": watchdog,
        "board.services": ",".join(SERVICES),
    }


def folder_for(home: Path) -> Path:
    """A folder of this process's own for runs, so that two commands do not meet."""
    folder = home / f"run.{os.getpid()}"
    folder.mkdir(parents=True, exist_ok=True)
    return folder
