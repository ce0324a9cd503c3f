"""Claims about the watchdog and about the system's ticks, each of which feeds it once.

Times are seconds.
"""

from __future__ import annotations

from wardex_desk.events import WatchdogEvent
from wardex_desk.judge import Verdict
from wardex_desk.judge_claims import EARLY, LATE_S
from wardex_desk.judge_evidence import SYSTEM, Life

TICK_S = 1.0
# On a busy machine; still less than a feed left out.
FEED_LATE_S = 0.9


def fed(verdict: Verdict, life: Life, held_up_s: float = 0.0, at_least: int = 1) -> bool:
    """The watchdog was fed every second while the supervisor lived.

    A system state feeds a second after it was entered, so a change of state begins the second anew.
    held_up_s: for how long pings may hold a feed up. The time of its own calls does not count.
    """
    limit = TICK_S + held_up_s + FEED_LATE_S
    first = life.feeds[0] if life.feeds else 0.0
    last = life.feeds[-1] if life.feeds else 0.0
    changes = [span.begin for span in life.spans(SYSTEM) if first < span.begin < last]
    moments = sorted(life.feeds + changes)
    gaps = [
        (begin, end - begin - _time_in_calls(life, begin, end))
        for begin, end in zip(moments, moments[1:])
    ]
    evidence = [
        f"after {life.clock(begin).strip()} no feed for {gap:.2f} s"
        for begin, gap in gaps
        if gap > limit
    ]
    if len(life.feeds) < at_least:
        evidence.append(f"fed {len(life.feeds)} times only")
    return verdict.claim(
        f"the watchdog is fed every second (feeds >= {at_least}, gaps <= {limit:.2f} s)",
        not evidence,
        evidence,
    )


def widest_gap(life: Life) -> tuple[float, float] | None:
    """Begin and end of the longest time between two feeds, the opening of the node being the first.

    None for a watchdog that was never fed. The silence that ends in a reset is no gap: nobody was
    there any more.
    """
    opened = [e.at for e in life.events if isinstance(e, WatchdogEvent) and e.what == "open"]
    moments = sorted(opened + life.feeds)
    pairs = list(zip(moments, moments[1:]))
    return max(pairs, key=lambda pair: pair[1] - pair[0]) if pairs else None


def gap_of(life: Life) -> float | None:
    """The length of the widest gap."""
    gap = widest_gap(life)
    return None if gap is None else gap[1] - gap[0]


def gap_in_scripts(life: Life, begin: float, end: float) -> float:
    """For how much of this time the supervisor waited for scripts."""
    return _time_in_calls(life, begin, end)


def longest_gap(verdict: Verdict, life: Life, seconds: float) -> bool:
    """No time between two feeds is longer than that, whatever the reason."""
    gap = gap_of(life)
    shown = "never fed" if gap is None else f"{gap:.2f} s"
    return verdict.claim(
        f"a watchdog that resets after {seconds:.1f} s would not bite",
        gap is None or gap <= seconds,
        [f"longest time between two feeds: {shown}"],
        [f"longest time between two feeds: {shown}"],
    )


def held_up(verdict: Verdict, life: Life, seconds: float) -> bool:
    """Something has kept the supervisor from feeding for so long, at least once."""
    gap = gap_of(life)
    shown = "never fed" if gap is None else f"{gap:.2f} s"
    return verdict.claim(
        f"the supervisor is kept from feeding for {seconds:.1f} s",
        gap is not None and gap >= seconds,
        [f"longest time between two feeds: {shown}"],
    )


def _time_in_calls(life: Life, begin: float, end: float) -> float:
    return sum(
        max(0.0, min(end, call.end) - max(begin, call.begin))
        for call in life.calls
        if call.end is not None
    )


def not_fed_after(verdict: Verdict, life: Life, moment: float | None, what: str) -> bool:
    """No feed from this moment on."""
    if moment is None:
        return verdict.claim(
            f"the watchdog is not fed after {what}", False, ["that never happened"]
        )
    late = [at for at in life.feeds if at > moment]
    return verdict.claim(
        f"the watchdog is not fed after {what}",
        not late,
        [f"fed at {life.clock(at).strip()}" for at in late],
    )


def never_armed(verdict: Verdict, life: Life) -> bool:
    """The watchdog device was not touched."""
    seen = life.watchdog + ["feed"] * len(life.feeds)
    return verdict.claim("the watchdog is never opened", not seen, [f"seen: {', '.join(seen)}"])


def ticks(verdict: Verdict, life: Life, state: str, count: int) -> bool:
    """The system stayed in a state for exactly so many ticks, each time; a tick is a feed."""
    spans = [span for span in life.spans(SYSTEM) if span.state == state]
    seen = [life.feeds_in(span) for span in spans]
    return verdict.claim(
        f"{state} lasts {count} ticks each time",
        bool(seen) and all(feeds == count for feeds in seen),
        [f"ticks seen: {seen}"],
    )


def ticks_in_all(verdict: Verdict, life: Life, state: str, count: int) -> bool:
    """All the times in a state together are exactly so many ticks."""
    seen = [life.feeds_in(span) for span in life.spans(SYSTEM) if span.state == state]
    return verdict.claim(
        f"{state} lasts {count} ticks in all, in {len(seen)} periods",
        sum(seen) == count,
        [f"ticks seen: {' + '.join(map(str, seen)) or 'none'}"],
    )


def reset_after(verdict: Verdict, life: Life, seconds: float) -> bool:
    """The hardware reset the device when it had not been fed for so long."""
    resets = [e.at for e in life.events if isinstance(e, WatchdogEvent) and e.what == "reset"]
    silence = resets[0] - life.feeds[-1] if resets and life.feeds else None
    return verdict.claim(
        f"the watchdog resets the device {seconds:.1f} s after the last feed",
        silence is not None and len(resets) == 1 and EARLY * seconds <= silence <= seconds + LATE_S,
        [f"resets: {len(resets)}", f"silence before: {silence}"],
    )


def reset_after_kill(verdict: Verdict, life: Life, seconds: float) -> bool:
    """As reset_after, for a supervisor that may have been killed before its first feed."""
    opened = [e.at for e in life.events if isinstance(e, WatchdogEvent) and e.what == "open"]
    resets = [e.at for e in life.events if isinstance(e, WatchdogEvent) and e.what == "reset"]
    last = max(opened + life.feeds, default=None)
    silence = resets[0] - last if resets and last is not None else None
    return verdict.claim(
        f"the watchdog resets the device {seconds:.1f} s after the last sign of life",
        silence is not None and len(resets) == 1 and EARLY * seconds <= silence <= seconds + LATE_S,
        [f"resets: {len(resets)}", f"silence before: {silence}"],
    )
