"""The command ./bench."""

import argparse
import os
import re
import sys
import tempfile
import time
from pathlib import Path
from typing import Sequence

from wardex_desk.ending import Stopped, stop_when_told

from wardex_bench import building, document, rows, table
from wardex_bench.building import BuildError
from wardex_bench.progress import Progress
from wardex_bench.row import Context, NotHere, Row, Unmeasured
from wardex_bench.table import Line

FAILED = 1
WRONG_WORDS = 2
# Load of the last minute above which times may scatter.
BUSY = 0.7


class WrongWords(Exception):
    """The words on the command line ask for nothing that there is."""


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="bench",
        description="Builds the release preset, measures what the supervisor costs and prints one "
        "table. Exit status: 0 every goal is met, 1 not so, 2 wrong words.",
    )
    parser.add_argument("rows", nargs="?", metavar="ROW", help="only rows that match this regex")
    parser.add_argument("--json", action="store_true", help="print the table for machines")
    parser.add_argument(
        "--short",
        action="store_true",
        help="only prove that every row can be measured: few rounds, goals do not count",
    )
    parser.add_argument(
        "--write-docs",
        action="store_true",
        help=f"also put the table of this whole run into {document.PATH.name}",
    )
    parser.add_argument("--list", action="store_true", help="print the names of the rows")
    return parser


def measured(row: Row, programs: Path, daemon: Path, short: bool, progress: Progress) -> Line:
    """Measures one row in a folder of its own."""
    with tempfile.TemporaryDirectory(prefix="wardex-bench-") as scratch:
        context = Context(programs, daemon, Path(scratch), short, progress.step)
        try:
            return Line(row, row.judged(row.measure(context)))
        except (Unmeasured, OSError) as error:
            return Line(row, None, f"not measured: {error}", isinstance(error, NotHere))


def _measure(wanted: Sequence[Row], arguments: argparse.Namespace) -> int:
    begin = time.monotonic()
    load = os.getloadavg()[0]
    if load > BUSY:
        print(f"Beware: others use this machine (load {load:.1f}).", file=sys.stderr)
    print("Building (release) ...", file=sys.stderr)
    building.build()
    progress = Progress(sys.stderr, len(wanted))
    lines = []
    for row in wanted:
        progress.row(row.name)
        lines.append(measured(row, building.PROGRAMS, building.DAEMON, arguments.short, progress))
        progress.done(table.verdict(lines[-1]))
    print(f"Done in {time.monotonic() - begin:.0f} s.", file=sys.stderr)
    print(table.as_json(lines) if arguments.json else table.text(lines))
    if arguments.write_docs:
        document.write(lines)
        print(f"The table is in {document.PATH}.", file=sys.stderr)
    if arguments.short:
        print("Short run: the figures only show that the rows work.", file=sys.stderr)
        return FAILED if any(line.failure and not line.is_impossible for line in lines) else 0
    return 0 if all(line.passed for line in lines) else FAILED


def main(words: Sequence[str]) -> int:
    """Does what the words ask for."""
    stop_when_told()
    try:
        return _perform(_parser().parse_args(words))
    except WrongWords as error:
        return _complain(str(error), WRONG_WORDS)
    except (BuildError, document.DocumentError) as error:
        return _complain(str(error), FAILED)
    except Stopped as stopped:
        return _complain(f"ended by signal {stopped.number}", 128 + stopped.number)


def _complain(text: str, status: int) -> int:
    print(f"bench: {text}", file=sys.stderr)
    return status


def _perform(arguments: argparse.Namespace) -> int:
    try:
        wanted = [row for row in rows.ALL if re.search(arguments.rows or "", row.name)]
    except re.error as error:
        raise WrongWords(f"'{arguments.rows}' is no regular expression: {error}") from None
    if not wanted:
        raise WrongWords(f"no row matches '{arguments.rows}': see ./bench --list")
    if arguments.list:
        print("\n".join(row.name for row in wanted))
        return 0
    if arguments.write_docs and (arguments.short or arguments.rows):
        raise WrongWords("only a whole run goes into the documents")
    return _measure(wanted, arguments)
