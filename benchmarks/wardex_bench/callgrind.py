"""Counts user-space instructions, the same in every run: by valgrind's callgrind."""

import re
from pathlib import Path
from typing import Callable, Mapping, Optional, Sequence

from wardex_bench import processes
from wardex_bench.processes import Word
from wardex_bench.row import Context, Unmeasured

TOTALS = re.compile(r"^(?:summary|totals): (\d+)", re.MULTILINE)


def total(text: str) -> int:
    """The instructions of a whole run, from callgrind's file."""
    found = TOTALS.search(text)
    if not found:
        raise Unmeasured("callgrind wrote no total")
    return int(found.group(1))


def is_complete(report: Path) -> bool:
    """Whether callgrind has written its file, or a part that it was asked for, to the end."""
    return report.is_file() and "\ntotals:" in report.read_text(encoding="utf-8", errors="replace")


def wrapped(command: Sequence[Word], report: Path) -> list[Word]:
    """The command below callgrind, which writes its file when the program ends."""
    return [
        *("valgrind", "--tool=callgrind", "--quiet", f"--callgrind-out-file={report}"),
        *command,
    ]


def instructions(
    context: Context, command: Sequence[Word], environment: Optional[Mapping[str, str]] = None
) -> int:
    """Instructions of one whole run of a command, all its threads, not its children."""
    report = context.scratch / "callgrind.out"
    processes.run(wrapped(command, report), environment)
    text = report.read_text(encoding="utf-8", errors="replace")
    report.unlink()
    return total(text)


def per_operation(
    context: Context,
    command: Callable[[int], Sequence[Word]],
    few: int,
    many: int,
    environment: Optional[Mapping[str, str]] = None,
) -> float:
    """Instructions of one operation, start and end of the program not counted.

    command: answers the command line that does the operation so many times.
    """
    context.progress(f"callgrind, {few} times")
    first = instructions(context, command(few), environment)
    context.progress(f"callgrind, {many} times")
    second = instructions(context, command(many), environment)
    return (second - first) / (many - few)
