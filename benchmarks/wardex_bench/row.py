"""One row of the table: what is measured, against which yardstick, and the goal."""

from dataclasses import dataclass, replace
from pathlib import Path
from typing import Callable, Optional


class Unmeasured(Exception):
    """A row cannot be measured here; the message says why and what to do."""


class NotHere(Unmeasured):
    """The same, because of what this machine is: nothing that a person could install helps."""


@dataclass(frozen=True)
class Context:
    """What a measurement may use.

    programs: folder of the built drivers and yardsticks; the daemon is `daemon`.
    scratch:  folder of the row's own, gone after it.
    short:    only prove that the row can be measured: few rounds and repetitions.
    progress: tells the person at the terminal what is going on.
    """

    programs: Path
    daemon: Path
    scratch: Path
    short: bool
    progress: Callable[[str], None]

    def program(self, name: str) -> Path:
        """A driver or yardstick by its name."""
        path = self.programs / name
        if not path.is_file():
            raise Unmeasured(f"{path} is not built")
        return path

    def rounds(self) -> int:
        """Rounds of a comparison by time."""
        return 2 if self.short else 15

    def scaled(self, count: int) -> int:
        """Repetitions: all of them, or few in a short run."""
        return max(1, count // 20) if self.short else count


@dataclass(frozen=True)
class Result:
    """What came out; figures in the row's unit.

    yardstick, ratio: None where the goal is a plain number.
    noisy: the figures scatter so much that they show nothing; such a row is not met.
    met:   filled in by judged(); None for a row without a goal.
    """

    ours: Optional[float]
    yardstick: Optional[float] = None
    ratio: Optional[float] = None
    note: str = ""
    noisy: bool = False
    met: Optional[bool] = None


@dataclass(frozen=True)
class Goal:
    """The goal in words, and whether a result meets it."""

    text: str
    is_met: Callable[[Result], bool]


def ours_at_most(limit: float, text: str = "") -> Goal:
    """A goal for our own figure, in the row's unit."""
    return Goal(
        text or f"<= {limit:g}", lambda result: result.ours is not None and result.ours <= limit
    )


def ratio_at_most(limit: float) -> Goal:
    """A goal for ours divided by the yardstick."""
    return Goal(
        f"<= {limit:.2f}x", lambda result: result.ratio is not None and result.ratio <= limit
    )


def ratio_at_least(limit: float) -> Goal:
    """The same where more is better."""
    return Goal(
        f">= {limit:.2f}x", lambda result: result.ratio is not None and result.ratio >= limit
    )


@dataclass(frozen=True)
class Row:
    """A row; goal None: shown for information, always met."""

    name: str
    unit: str
    goal: Optional[Goal]
    measure: Callable[[Context], Result]

    def judged(self, result: Result) -> Result:
        """The result with the verdict."""
        if self.goal is None:
            return result
        return replace(result, met=self.goal.is_met(result) and not result.noisy)
