"""The table for people, and the same for machines."""

import json
import platform
import subprocess
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Optional, Sequence

from wardex_bench.row import Result, Row

HEADINGS = ("metric", "ours", "yardstick", "ratio", "goal", "met")


@dataclass(frozen=True)
class Line:
    """A row with what came out; failure: why nothing did.

    is_impossible: nothing ever can on a machine like this.
    """

    row: Row
    result: Optional[Result]
    failure: str = ""
    is_impossible: bool = False

    @property
    def passed(self) -> bool:
        """Whether this line lets the command end well."""
        return self.row.goal is None or (self.result is not None and self.result.met is True)


def figure(value: Optional[float], unit: str = "") -> str:
    """A number as a person wants it: three to four figures that count."""
    if value is None:
        return "-"
    size = abs(value)
    if size >= 999.5:
        text = f"{value:,.0f}".replace(",", " ")
    elif size >= 100 or value == int(value):
        text = f"{value:.0f}"
    else:
        text = f"{value:.3g}"
    return f"{text} {unit}".rstrip()


def verdict(line: Line) -> str:
    """The last column."""
    if line.result is None:
        return "FAILED"
    if line.result.met is None:
        return "-"
    if line.result.noisy:
        return "noisy"
    return "yes" if line.result.met else "NO"


def cells(line: Line) -> tuple[str, ...]:
    """The columns of a line."""
    result = line.result or Result(None)
    goal = line.row.goal.text if line.row.goal else "-"
    ratio = "-" if result.ratio is None else f"{result.ratio:.2f}x"
    unit = line.row.unit
    return (
        line.row.name,
        figure(result.ours, unit),
        figure(result.yardstick, unit),
        ratio,
        goal,
        verdict(line),
    )


def remarks(line: Line) -> str:
    """What is said below a line."""
    return line.failure or (line.result.note if line.result else "")


def text(lines: Sequence[Line]) -> str:
    """The table in plain columns; remarks stand indented below their line."""
    rows = [HEADINGS, *(cells(line) for line in lines)]
    widths = [max(len(row[column]) for row in rows) for column in range(len(HEADINGS))]

    def laid_out(row: Sequence[str]) -> str:
        first, *others = (cell.ljust(width) for cell, width in zip(row, widths))
        return "  ".join([first, *others]).rstrip()

    said = [laid_out(HEADINGS), "  ".join("-" * width for width in widths)]
    for line in lines:
        said.append(laid_out(cells(line)))
        if remarks(line):
            said.extend(f"    {part}" for part in remarks(line).splitlines())
    return "\n".join(said)


def markdown(lines: Sequence[Line]) -> str:
    """The table for the documents."""
    rows = [(*HEADINGS, "remarks"), ("---",) * (len(HEADINGS) + 1)]
    rows += [(*cells(line), remarks(line).replace("\n", " ")) for line in lines]
    return "\n".join(f"| {' | '.join(row)} |" for row in rows)


def as_json(lines: Sequence[Line]) -> str:
    """The table for machines."""

    def record(line: Line) -> dict[str, Any]:
        result = line.result or Result(None)
        return {
            "metric": line.row.name,
            "unit": line.row.unit,
            "ours": result.ours,
            "yardstick": result.yardstick,
            "ratio": result.ratio,
            "goal": line.row.goal.text if line.row.goal else None,
            "met": result.met if line.result else False,
            "noisy": result.noisy,
            "remarks": remarks(line),
        }

    return json.dumps({"machine": machine(), "rows": [record(line) for line in lines]}, indent=2)


def machine() -> dict[str, str]:
    """What the figures depend on."""
    model = "unknown processor"
    processors = 0
    for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("processor"):
            processors += 1
        if line.startswith("model name"):
            model = line.partition(":")[2].strip()
    memory = Path("/proc/meminfo").read_text(encoding="utf-8").split()[1]
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True).stdout
    release = Path("/etc/os-release").read_text(encoding="utf-8")
    system = next(
        (line[13:-1] for line in release.splitlines() if line.startswith("PRETTY_NAME=")), "Linux"
    )
    return {
        "processor": f"{processors} x {model}",
        "memory": f"{int(memory) // 1024} MiB",
        "system": f"{system}, Linux {platform.release()}",
        "compiler": compiler.partition("\n")[0],
    }
