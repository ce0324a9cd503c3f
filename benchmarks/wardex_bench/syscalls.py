"""Counts system calls of one operation, by strace."""

from pathlib import Path
from typing import Callable, Sequence

from wardex_bench import processes
from wardex_bench.processes import Word
from wardex_bench.row import Context

WRITING = ("write", "writev", "pwrite64", "send", "sendto", "sendmsg", "sendmmsg")
READING = ("read", "readv", "pread64", "recv", "recvfrom", "recvmsg", "recvmmsg")


def counted(report: str) -> dict[str, int]:
    """Calls by name, from the table that `strace -c` writes."""
    calls: dict[str, int] = {}
    for line in report.splitlines():
        # % time, seconds, usecs/call, calls, errors (or blanks), name
        words = line.split()
        if len(words) in (5, 6) and words[3].isdigit() and words[-1] != "total":
            calls[words[-1]] = calls.get(words[-1], 0) + int(words[3])
    return calls


def of_run(context: Context, command: Sequence[Word]) -> dict[str, int]:
    """Calls of a whole run, all its threads."""
    report = Path(context.scratch) / "strace.out"
    processes.run(("strace", "-f", "-c", "-o", report, "setpriv", "--pdeathsig", "KILL", *command))
    text = report.read_text(encoding="utf-8")
    report.unlink()
    return counted(text)


def per_operation(
    context: Context, command: Callable[[int], Sequence[Word]], few: int, many: int
) -> dict[str, float]:
    """Calls of one operation by name, start and end of the program not counted."""
    context.progress(f"strace, {few} times")
    first = of_run(context, command(few))
    context.progress(f"strace, {many} times")
    second = of_run(context, command(many))
    names = sorted(first.keys() | second.keys())
    return {name: (second.get(name, 0) - first.get(name, 0)) / (many - few) for name in names}


def sum_of(calls: dict[str, float], names: Sequence[str]) -> float:
    """How many of these kinds together."""
    return sum(calls.get(name, 0.0) for name in names)
