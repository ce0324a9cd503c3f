"""Compares times on a machine that does other things, too."""

import contextlib
import functools
import os
import random
import statistics
import subprocess
from dataclasses import dataclass
from typing import Callable, Iterator, Sequence

from wardex_bench import processes
from wardex_bench.processes import Word
from wardex_bench.row import Context, Result, Unmeasured

# Beyond this half width of the ratio's 95 % interval nothing is said about it.
NOISE_LIMIT = 0.10
# So many times the rounds before giving up on a noisy machine.
PATIENCE = 3
FIRST = -20
REAL_TIME = ("chrt", "--fifo", "1")


@dataclass(frozen=True)
class Comparison:
    """Medians of both sides; ratio is ours over the yardstick's, round by round.

    low, high: 95 % interval of the median ratio, by order statistics.
    """

    ours: float
    yardstick: float
    ratio: float
    low: float
    high: float
    rounds: int

    @property
    def scatter(self) -> float:
        """Half the width of the interval, as a part of the ratio."""
        return (self.high - self.low) / 2 / self.ratio

    @property
    def noisy(self) -> bool:
        """Whether the ratio is too uncertain to be judged."""
        return self.scatter > NOISE_LIMIT

    def result(self, note: str = "") -> Result:
        """As a row's result; the note tells the uncertainty."""
        said = f"+-{self.scatter * 100:.1f} % in {self.rounds} rounds"
        if self.noisy:
            said = f"machine too noisy to judge: {said}"
        notes = "; ".join(part for part in (note, said) if part)
        return Result(self.ours, self.yardstick, self.ratio, notes, self.noisy)


def interval(values: Sequence[float]) -> tuple[float, float]:
    """The 95 % interval of the median: the order statistics nearest to it (sign test)."""
    ordered = sorted(values)
    count = len(ordered)
    skipped = max(0, int(count / 2 - 0.98 * count**0.5))
    return ordered[skipped], ordered[count - 1 - skipped]


def judged(ours: Sequence[float], yardstick: Sequence[float]) -> Comparison:
    """What the rounds' figures say; both sides in the order of the rounds."""
    ratios = [mine / bare for mine, bare in zip(ours, yardstick)]
    low, high = interval(ratios)
    return Comparison(
        statistics.median(ours),
        statistics.median(yardstick),
        statistics.median(ratios),
        low,
        high,
        len(ratios),
    )


def compare(
    context: Context,
    ours: Callable[[], float],
    yardstick: Callable[[], float],
    pieces: int = 1,
) -> Comparison:
    """Measures both sides in each round, in an order that is drawn; more rounds when noisy.

    The sides answer their figure: a time, or a rate. pieces: so many times the usual rounds, for
    sides that take a short time each; a machine whose pace drifts is then followed more closely.
    """
    rounds = context.rounds() if context.short else context.rounds() * pieces
    order = random.Random(0)
    figures: dict[Callable[[], float], list[float]] = {ours: [], yardstick: []}
    for side in figures:
        if not context.short:
            side()  # caches and servers warm
    for attempt in range(1, PATIENCE + 1):
        for _ in range(rounds):
            context.progress(f"round {len(figures[ours]) + 1} of {rounds * attempt}")
            sides = list(figures)
            order.shuffle(sides)
            for side in sides:
                figures[side].append(side())
        comparison = judged(figures[ours], figures[yardstick])
        if not comparison.noisy or context.short:
            break
    return comparison


@contextlib.contextmanager
def on_processor(place: int) -> Iterator[None]:
    """Programs started in the block have one processor: 0 the first, -1 the last that we may use.

    Where the system moves them about, the figure depends on who happens to stand beside whom. They
    come first among the ordinary programs there, where we may say so.
    """
    allowed = os.sched_getaffinity(0)
    niceness = os.getpriority(os.PRIO_PROCESS, 0)
    os.sched_setaffinity(0, {sorted(allowed)[place]})
    with contextlib.suppress(PermissionError):
        os.setpriority(os.PRIO_PROCESS, 0, FIRST)
    try:
        yield
    finally:
        os.sched_setaffinity(0, allowed)
        os.setpriority(os.PRIO_PROCESS, 0, niceness)


@functools.lru_cache(maxsize=None)
def _may_be_real_time() -> bool:
    return subprocess.run((*REAL_TIME, "true"), capture_output=True).returncode == 0


def real_time(command: Sequence[Word]) -> list[Word]:
    """The command at the priority that the supervisor has on the device, where we may give it.

    A server that it wakes then never takes the processor away from it before it waits.
    """
    return [*REAL_TIME, *command] if _may_be_real_time() else list(command)


def reported(command: Sequence[Word]) -> Callable[[], float]:
    """A side that is a program: the figure is the last word it prints."""

    def side() -> float:
        words = processes.run(command).split()
        try:
            return float(words[-1])
        except (IndexError, ValueError):
            raise Unmeasured(f"{command[0]} printed no figure: {' '.join(words)!r}") from None

    return side
