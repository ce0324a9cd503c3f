"""Plays every fault side by side and tells what became of the supervisor, and how long nobody fed.

The table is what docs/reliability.md shows; `write` puts a fresh one there.
"""

from __future__ import annotations

import math
import os
import re
from collections.abc import Callable, Iterable, Sequence
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path
from typing import TextIO

from wardex_desk import faults, scenario
from wardex_desk.box import Programs
from wardex_desk.desk import Desk
from wardex_desk.faults_types import PREFIX
from wardex_desk.judge_evidence import Life, lives
from wardex_desk.judge_watchdog import gap_in_scripts, widest_gap
from wardex_desk.places import REPOSITORY
from wardex_desk.scenarios_types import Scenario
from wardex_desk.sources import EventStream, in_order
from wardex_desk.waiting import now

DOCUMENT = REPOSITORY / "docs/reliability.md"
HEADING = "## Faults and the feed gap"
INTRODUCTION = "# Reliability\n\nWhat was done to get the supervisor down, and what came of it.\n"
PER_PROCESSOR = 3
TICK_S = 1.0
# Pings of corvane and pictor without an answer hold a tick up that is about to come.
PINGS_S = 2.2 + 1.0
# Each change of the system's state begins the tick anew, and two may come before a feed.
ROUNDS = 3
# The wait for a Redis that stands still, once in a life.
REDIS_S = 2.0
SAFETY = 2

Done = Callable[["Row"], None]


@dataclass(frozen=True)
class Row:
    """One fault as it was played.

    gap_s: the longest time between two feeds, None for a device that was never fed.
    scripts_s: how much of it the supervisor waited for scripts.
    """

    name: str
    summary: str
    holds: bool
    outcome: str
    gap_s: float | None
    scripts_s: float

    @property
    def own_s(self) -> float:
        """What the supervisor itself needed."""
        return (self.gap_s or 0.0) - self.scripts_s


def outcome(all_lives: Sequence[Life]) -> str:
    """What became of the supervisor, in a word or two."""
    resets = sum(life.reason == "watchdog" for life in all_lives)
    if resets:
        return "reset" if resets == 1 else f"{resets} resets"
    if all_lives[0].endings:
        return f"ends, status {all_lives[0].endings[0]}"
    return "goes on"


def measure(fault: Scenario, programs: Programs, home: Path | None) -> Row:
    """Plays one fault on a device of its own."""
    desk = Desk(programs, fault.name, home)
    with desk.device(fault.plan) as device:
        verdict = scenario.perform(fault, device)
        stream = EventStream(device.instance.folder)
        all_lives = lives(in_order(stream.drain(now())))
    gaps = [(widest_gap(life), life) for life in all_lives]
    widest = max(
        ((gap, life) for gap, life in gaps if gap is not None),
        key=lambda pair: pair[0][1] - pair[0][0],
        default=None,
    )
    return Row(
        fault.name.removeprefix(PREFIX),
        fault.summary,
        verdict.holds,
        outcome(all_lives),
        None if widest is None else widest[0][1] - widest[0][0],
        0.0 if widest is None else gap_in_scripts(widest[1], *widest[0]),
    )


def play_all(programs: Programs, home: Path | None, with_soaks: bool, done: Done) -> list[Row]:
    """Plays all faults, as many at a time as the machine bears; `done` hears of each as it ends."""
    chosen = (*faults.SOAKS, *faults.SCENARIOS) if with_soaks else faults.SCENARIOS
    order = [fault.name.removeprefix(PREFIX) for fault in (*faults.SCENARIOS, *faults.SOAKS)]

    def one(fault: Scenario) -> Row:
        row = measure(fault, programs, home)
        done(row)
        return row

    with ThreadPoolExecutor(PER_PROCESSOR * (os.cpu_count() or 1)) as pool:
        rows = list(pool.map(one, chosen))
    return sorted(rows, key=lambda row: order.index(row.name))


def shown(row: Row) -> str:
    """A row for a person who watches."""
    gap = "-" if row.gap_s is None else f"{row.gap_s:.2f} s"
    return f"{'PASS' if row.holds else 'FAIL'}  {row.name:<26} {row.outcome:<16} {gap}"


def table(rows: Iterable[Row]) -> str:
    """The table of the document."""
    lines = [
        "| Fault | What happens | Supervisor | Longest gap | of it scripts |",
        "|---|---|---|---|---|",
    ]
    for row in rows:
        gap = "-" if row.gap_s is None else f"{row.gap_s:.2f} s"
        scripts = f"{row.scripts_s:.2f} s" if row.scripts_s >= 0.01 else ""
        lines.append(
            f"| {row.name} | {row.summary} | {row.outcome} | {gap} | {scripts} |".replace(
                "|  |", "| |"
            )
        )
    return "\n".join(lines)


def section(rows: Sequence[Row]) -> str:
    """The section of the document."""
    own = max(rows, key=lambda row: row.own_s)
    bound = ROUNDS * (TICK_S + PINGS_S) + REDIS_S
    advised = math.ceil(SAFETY * bound)
    return f"""{HEADING}

Each fault is a story of the simulated device (`./run --scenario {PREFIX}NAME`) with a verdict from
outside, and one of the tests. The gap is the longest time between two feeds while the supervisor
lives, the opening of the watchdog being the first; a silence that ends in a reset is none. The table
is written by `./run --faults --soak --write-docs`.

**For the integrator.** The longest gap of the supervisor's own, without scripts, was
**{own.own_s:.1f} s** ({own.name}). The rules allow {bound:.1f} s at most: two pings without an answer
hold a tick of {TICK_S:.0f} s up for {PINGS_S:.1f} s when they begin just before it, a change of the system's state begins
the tick anew, which may happen twice before a feed, and a Redis that stands still adds {REDIS_S:.0f} s once in a
life.
Give the watchdog **{advised} s, and twice the time that the longest pair of
"stop" and "restart" or the package's restart takes on the device**. From the supervisor's start to
the opening of the watchdog nobody guards it but what has armed the watchdog before.

{table(rows)}
"""


def with_section(document: str, text: str) -> str:
    """The document with this text for the section, at its place or at the end."""
    found = re.search(rf"^{HEADING}$.*?(?=^## |\Z)", document, re.MULTILINE | re.DOTALL)
    if found is None:
        return f"{document.rstrip()}\n\n{text}"
    rest = document[found.end() :]
    return document[: found.start()] + text + ("\n" + rest if rest else "")


def write(rows: Sequence[Row]) -> None:
    """Puts the section into docs/reliability.md."""
    document = DOCUMENT.read_text(encoding="utf-8") if DOCUMENT.exists() else INTRODUCTION
    DOCUMENT.write_text(with_section(document, section(rows)), encoding="utf-8")


def play_and_tell(
    programs: Programs, home: Path | None, with_soaks: bool, into_docs: bool, stream: TextIO
) -> int:
    """What `./run --faults` does; 0 only if every device did what its story says."""

    def tell(row: Row) -> None:
        print(shown(row), file=stream, flush=True)

    rows = play_all(programs, home, with_soaks, tell)
    failed = [row.name for row in rows if not row.holds]
    print(
        f"{len(rows)} faults, {len(failed)} failed{': ' if failed else ''}{' '.join(failed)}",
        file=stream,
    )
    if into_docs and not failed:
        write(rows)
    return 1 if failed else 0
