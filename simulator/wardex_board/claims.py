"""Claims that several scenarios of the board make about a life."""

from __future__ import annotations

import math
from collections.abc import Sequence

from wardex_board.report import Life
from wardex_desk import judge_texts as texts
from wardex_desk.judge import Verdict

TICK_S = 1.0
STARTING, STABLE = "SuprStartingSystem", "SuprStableSystem"
UNSTABLE, REBOOT = "SuprUnstableSystem", "SuprRebootSystem"
STARTED = (("WARN", texts.STARTS), ("WARN", texts.FAMILY["ZK4XX"]))
# What a period may be off: the main thread runs before all others, also when they have no memory.
JITTER_S = 0.25


def ends(verdict: Verdict, lives: Sequence[Life], *expected: str) -> bool:
    """How each life of the board ended, as the emulator saw it."""
    return verdict.equal(
        f"the board's lives end so: {', '.join(expected)}",
        list(expected),
        [life.end for life in lives],
    )


def complaints(verdict: Verdict, life: Life, *expected: tuple[str, str]) -> None:
    """All records at WARN and above, exactly."""
    verdict.equal(
        f"boot {life.number}: {len(expected)} records at WARN and above, to the byte",
        list(expected),
        life.complaints(),
    )


def path(verdict: Verdict, life: Life, *expected: str) -> None:
    """The states of the system machine, in order."""
    verdict.equal(f"boot {life.number}: {' -> '.join(expected)}", list(expected), life.states())


def gaps(life: Life) -> list[float]:
    """Seconds between the feedings of the watchdog that the kernel saw."""
    times = [float(text) for text in life.texts("feed")]
    return [after - before for before, after in zip(times, times[1:])]


def feeds(verdict: Verdict, life: Life, for_s: float, timeout_s: float) -> None:
    """The watchdog is fed once a second, and never even a moment late."""
    found = gaps(life)
    shortest, longest = min(found, default=math.nan), max(found, default=math.nan)
    mean = sum(found) / len(found) if found else math.nan
    figures = f"{len(found)} periods, {mean:.4f} s each, {shortest:.4f} to {longest:.4f} s"
    verdict.claim(
        f"boot {life.number}: fed every second for {for_s:.0f} s of the board",
        len(found) >= for_s / TICK_S - 2 and abs(mean - TICK_S) < 0.01,
        [figures],
        [figures],
    )
    verdict.claim(
        f"boot {life.number}: no period is {JITTER_S} s off, where the watchdog waits for "
        f"{timeout_s:.0f} s",
        TICK_S - JITTER_S < shortest and longest < TICK_S + JITTER_S,
        [figures],
    )


def feeds_beside_restarts(verdict: Verdict, life: Life, ticks: int, timeout_s: float) -> None:
    """Each tick feeds, also those before and after a package restart, which holds them up."""
    found = gaps(life)
    longest = max(found, default=math.nan)
    figures = f"fed {len(life.texts('feed'))} times, {longest:.2f} s apart at most"
    verdict.claim(
        f"boot {life.number}: fed at each of {ticks} ticks, and the restarts between them leave a "
        f"third of the {timeout_s:.0f} s",
        len(life.texts("feed")) == ticks and longest < timeout_s * 2 / 3,
        [figures],
        [figures],
    )


def falls(verdict: Verdict, life: Life, word: str, timeout_s: float) -> None:
    """From what was said under the word on nobody feeds, and the watchdog resets the board in time.

    The last feed was up to a tick before, and the board gives a sign of life each second.
    """
    alone = life.last_at - life.at(word)
    figures = f"{alone:.2f} s from '{word}' to the last sign of the board"
    verdict.claim(
        f"boot {life.number}: the watchdog resets the board, not before and not after its "
        f"{timeout_s:.0f} s",
        timeout_s - 3 <= alone <= timeout_s,
        [figures],
        [figures],
    )


def begin_of(life: Life, call: str) -> float:
    """When a script was first called with an action, by its own journal; not a number if never."""
    begun = [text.split() for text in life.texts("script") if text.endswith(f" {call} begin")]
    return float(begun[0][0]) if begun else math.nan


def calls(life: Life) -> list[str]:
    """What scripts were called after the board's own start of the package, in order."""
    begun = [text.split(" ", 1)[1] for text in life.texts("script") if text.endswith(" begin")]
    return [text.removesuffix(" begin") for text in begun if not text.endswith(" start begin")]
