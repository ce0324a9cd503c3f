"""The command ./board."""

from __future__ import annotations

import argparse
import os
import shutil
import signal
import subprocess
import sys
from collections.abc import Sequence
from pathlib import Path

from wardex_board import figures, images, machine, product, scenario
from wardex_board.kernel import ImageError
from wardex_board.machine import Plan
from wardex_board.places import RUNS
from wardex_board.qmp import QmpError
from wardex_board.scenario import Scenario, Stage
from wardex_board.scenarios import SCENARIOS
from wardex_desk.building import BuildError
from wardex_desk.ending import Stopped, stop_when_told
from wardex_desk.judge import Verdict
from wardex_desk.places import REPOSITORY
from wardex_desk.story_print import Printer
from wardex_desk.waiting import now

FAILED = 1
WRONG_WORDS = 2


def main(arguments: Sequence[str]) -> int:
    """Does what the words ask for; 0 all claims hold, 1 some do not, 2 wrong words."""
    words = _parse(arguments)
    if words.list:
        for name, story in SCENARIOS.items():
            print(f"{name:<12} {story.summary}")
        return 0
    names = list(SCENARIOS) if words.all else words.scenario
    if words.write_docs and not words.figures:
        print("board: --write-docs belongs to --figures", file=sys.stderr)
        return WRONG_WORDS
    unknown = [name for name in names if name not in SCENARIOS]
    if unknown or not (names or words.shell or words.figures):
        wrong = f"no scenario is called '{unknown[0]}'" if unknown else "nothing to do"
        print(f"board: {wrong}: say --shell, --all or {', '.join(SCENARIOS)}", file=sys.stderr)
        return WRONG_WORDS
    stop_when_told()
    folder = scenario.folder_for(RUNS)
    try:
        return _perform(words, names, folder)
    except (BuildError, ImageError, QmpError, OSError) as error:
        print(f"board: {error}", file=sys.stderr)
        return FAILED
    except Stopped as stopped:
        return 128 + stopped.number
    finally:
        _tidy(folder)


def _parse(arguments: Sequence[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="./board",
        description="An emulated 32-bit ARM board with the installed product on it: a real kernel, "
        "real EEPROMs and a real watchdog.",
    )
    parser.add_argument("scenario", nargs="*", help="what to play; judged claim by claim")
    parser.add_argument("--list", action="store_true", help="the scenarios, one line each")
    parser.add_argument("--all", action="store_true", help="play all of them")
    parser.add_argument("--shell", action="store_true", help="a terminal on the running board")
    parser.add_argument(
        "--figures", action="store_true", help="what the supervisor costs there, as a table"
    )
    parser.add_argument(
        "--write-docs", action="store_true", help="with --figures: into docs/performance.md, too"
    )
    parser.add_argument("--no-install", action="store_true", help=argparse.SUPPRESS)
    return parser.parse_args(arguments)


def _perform(words: argparse.Namespace, names: Sequence[str], folder: Path) -> int:
    begin = now()

    def tell(text: str) -> None:
        print(f"[{now() - begin:6.1f} s] {text}", file=sys.stderr, flush=True)

    if not _prepared(words.no_install):
        return FAILED
    tell("Building the packages for the board ...")
    packages = product.build(RUNS / "build.log")
    over = folder / "product.cpio"
    with open(over, "wb") as stream:
        product.write(stream, packages)
    stage = Stage(images.prepared(tell), over, folder, tell)
    if words.shell:
        return _shell(stage)
    stories = [SCENARIOS[name] for name in names]
    if words.figures:
        stories.append(figures.FIGURES)
    return _judge(stage, stories, packages, words.write_docs, begin)


def _prepared(as_it_is: bool) -> bool:
    """Gets what is missing; says why when that cannot be."""
    line = ["packaging/prepare-armhf", "board", *(["--no-install"] if as_it_is else [])]
    return subprocess.run(line, cwd=REPOSITORY).returncode == 0


def _judge(
    stage: Stage,
    stories: Sequence[Scenario],
    packages: Sequence[Path],
    into_docs: bool,
    begin: float,
) -> int:
    printer = Printer(sys.stdout)
    failed = []
    # As many as there are processors: each emulated board keeps one busy.
    for story, verdict, told in stage.perform(stories, len(os.sched_getaffinity(0))):
        _print(verdict, f"{story.name}: {story.summary}", printer)
        if not verdict.holds:
            failed.append(story.name)
        elif story is figures.FIGURES:
            table = figures.table(told, packages)
            print(table)
            if into_docs:
                figures.write(table)
    if failed:
        print(f"board: not as it should be: {', '.join(failed)}", file=sys.stderr)
        return FAILED
    print(f"All {len(stories)} as they should be, in {now() - begin:.0f} s.")
    return 0


def _print(verdict: Verdict, heading: str, printer: Printer) -> None:
    printer.heading(heading)
    for finding in verdict.findings:
        printer.verdict(finding.word, finding.claim)
        for line in finding.details if finding.holds else finding.evidence:
            printer.remark(line if finding.holds else f"! {line}")


def _shell(stage: Stage) -> int:
    """The board with its console on this terminal, until it is switched off."""
    plan = Plan(
        eeproms={**machine.notebook(), **scenario.eeproms_of("ZK4XX")},
        words={**scenario.words("shell", "", "timeout=60"), "board.shell": "1"},
    )
    machine.prepare(stage.folder, stage.images, plan, [stage.product])
    line = machine.command(stage.folder, stage.images, plan, "mon:stdio")
    # With a person at it the board's clock must follow the person's.
    line[line.index("-icount") + 1] = f"shift={plan.shift},sleep=on"
    stage.tell(
        "The board boots; `poweroff` or Ctrl-A X ends it. A shell comes in about half a minute."
    )
    for end in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(end, signal.SIG_DFL)
    return subprocess.run(line).returncode


def _tidy(folder: Path) -> None:
    """Leaves what a person may want to read: consoles and reports of the last run."""
    last = RUNS / "last"
    for big in ("product.cpio", "root.cpio"):
        for path in folder.rglob(big):
            path.unlink(missing_ok=True)
    shutil.rmtree(last, ignore_errors=True)
    try:
        os.rename(folder, last)
    except OSError:
        # Another command has put its own there meanwhile.
        shutil.rmtree(folder, ignore_errors=True)
