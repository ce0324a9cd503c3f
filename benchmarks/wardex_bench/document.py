"""Puts the table of a run into the documents."""

import datetime
from typing import Sequence

from wardex_bench import table
from wardex_bench.building import REPOSITORY
from wardex_bench.table import Line

PATH = REPOSITORY / "docs/performance.md"
BEGIN = "<!-- The rest is written by ./bench --write-docs, up to the end mark. -->"
END = "<!-- End of what ./bench --write-docs writes. -->"


class DocumentError(Exception):
    """The document has no place for the table; the message says what is missing."""


def section(lines: Sequence[Line], day: datetime.date) -> str:
    """The machine and the table, between the marks."""
    machine = "\n".join(f"- {name}: {value}" for name, value in table.machine().items())
    met = sum(1 for line in lines if line.result and line.result.met)
    judged = sum(1 for line in lines if line.row.goal)
    head = f"Run of {day.isoformat()}: {met} of {judged} goals met, on this machine:"
    return f"{BEGIN}\n\n{head}\n\n{machine}\n\n{table.markdown(lines)}\n\n{END}"


def filled(text: str, lines: Sequence[Line], day: datetime.date) -> str:
    """The document with the new table in the place of the old one."""
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        raise DocumentError(f"{PATH} lacks the marks of the table: '{BEGIN}' and '{END}'")
    return before + section(lines, day) + after


def write(lines: Sequence[Line]) -> None:
    """Puts the table of today's run into the document."""
    text = PATH.read_text(encoding="utf-8")
    PATH.write_text(filled(text, lines, datetime.date.today()), encoding="utf-8")
