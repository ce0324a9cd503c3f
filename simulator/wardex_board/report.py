"""What the board said over its second serial line, life by life.

Shape: one line per fact, `NONCE UPTIME WORD TEXT`; the nonce is drawn for the run, so that nothing
       else on the board can speak for the scenario. `boot N` begins a life.
"""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, field

from wardex_board.machine import OUT_OF_TIME
from wardex_desk.events import Record
from wardex_desk.sources_parse import ParseError, read_record

BEGIN = "boot"
ENDLESS = "still running"


@dataclass(frozen=True)
class Line:
    """A fact and the board's uptime, in seconds, when it was told."""

    at: float
    word: str
    text: str


@dataclass
class Life:
    """From one start of the board to the next: what it said, and how it ended."""

    number: int
    lines: list[Line] = field(default_factory=list)
    end: str = ENDLESS

    def texts(self, word: str) -> list[str]:
        """What was said under a word, in order."""
        return [line.text for line in self.lines if line.word == word]

    def text(self, word: str) -> str:
        """The last that was said under a word; empty when it was never said."""
        said = self.texts(word)
        return said[-1] if said else ""

    def number_of(self, word: str) -> float:
        """The last number that was said under a word; not a number when there is none."""
        try:
            return float(self.text(word).split()[0])
        except (IndexError, ValueError):
            return float("nan")

    @property
    def last_at(self) -> float:
        """When the board gave its last sign; not a number when it gave none."""
        return max((line.at for line in self.lines), default=float("nan"))

    def at(self, word: str) -> float:
        """When something was last said under a word; not a number when it never was."""
        return max((line.at for line in self.lines if line.word == word), default=float("nan"))

    @property
    def records(self) -> list[Record]:
        """The log records that were told; for one that makes no sense, see senseless()."""
        return [record for record in map(_record, self.texts("record")) if record]

    def senseless(self) -> list[str]:
        """What was told as a log record and is none."""
        return [text for text in self.texts("record") if _record(text) is None]

    def complaints(self) -> list[tuple[str, str]]:
        """Level and text of each record at WARN and above."""
        return [(item.level, item.text) for item in self.records if item.is_at_least("WARN")]

    def states(self) -> list[str]:
        """The states of the system machine that were entered, in order."""
        suffix = "::entry"
        return [
            item.text.split(suffix)[0]
            for item in self.records
            if suffix in item.text and "System" in item.text.split(suffix)[0]
        ]


def _record(text: str) -> Record | None:
    try:
        return read_record(text)
    except ParseError:
        return None


def parse(line: str, nonce: str) -> Line | None:
    """One line; None for what is not the board's own."""
    words = line.split(" ", 3)
    if len(words) < 3 or words[0] != nonce:
        return None
    try:
        at = float(words[1])
    except ValueError:
        return None
    return Line(at, words[2], words[3] if len(words) == 4 else "")


def lives(report: str, nonce: str, ends: Sequence[str]) -> list[Life]:
    """The lives that the report tells, each with its end as seen from outside."""
    found: list[Life] = []
    for text in report.splitlines():
        line = parse(text, nonce)
        if line is None:
            continue
        if line.word == BEGIN:
            found.append(Life(len(found) + 1))
        if found:
            found[-1].lines.append(line)
    for life, end in zip(found, ends):
        life.end = end
    if OUT_OF_TIME in ends and found:
        found[-1].end = OUT_OF_TIME
    return found
