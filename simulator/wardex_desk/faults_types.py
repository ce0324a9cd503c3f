"""What a fault is: something that goes wrong with a device, and what its supervisor makes of it."""

from __future__ import annotations

from collections import Counter
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, field

from wardex_desk import judge_claims as claim
from wardex_desk import judge_watchdog as watchdog
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_claims import Complaint
from wardex_desk.judge_evidence import Life
from wardex_desk.scenarios_stage import Stage
from wardex_desk.scenarios_trouble import STARTED
from wardex_desk.scenarios_types import Judge, Scenario

PREFIX = "fault-"


@dataclass(frozen=True)
class Fault:
    """One way for the world around the supervisor to fail, as a device plays it.

    gap_s:    the longest time between two feeds that the supervisor may need for it, in seconds.
    held_s:   for how long the fault must have kept the supervisor from feeding, or it did not happen.
    begins:   the records of WARN or worse with which the first life starts.
    says:     those of the fault, each of them exactly once.
    repeats:  those that come again and again, once at least.
    boots:    why the device boots; more than once for a fault that ends in a reset.
    endings:  the statuses with which the supervisor ends in the first life.
    also:     what else is claimed.
    """

    name: str
    summary: str
    play: Callable[[Stage], None]
    gap_s: float
    plan: Plan = Plan()
    orders: Mapping[str, tuple[str, ...]] = field(default_factory=dict)
    begins: tuple[Complaint, ...] = STARTED
    says: tuple[Complaint, ...] = ()
    repeats: tuple[Complaint, ...] = ()
    boots: tuple[str, ...] = ("power-on",)
    endings: tuple[int, ...] = ()
    also: Judge | None = None
    held_s: float = 0.0

    def scenario(self) -> Scenario:
        """The fault as a story like any other."""
        return Scenario(
            PREFIX + self.name, self.summary, self.play, self._judge, self.plan, self.orders
        )

    def _judge(self, verdict: Verdict, lives: Sequence[Life]) -> None:
        life = lives[0]
        claim.boots(verdict, lives, *self.boots)
        self._judge_complaints(verdict, life)
        verdict.equal("the supervisor ends only as it must", list(self.endings), life.endings)
        for each in lives:
            watchdog.longest_gap(verdict, each, self.gap_s)
        if self.held_s > 0.0:
            watchdog.held_up(verdict, life, self.held_s)
        if self.also is not None:
            self.also(verdict, lives)

    def _judge_complaints(self, verdict: Verdict, life: Life) -> None:
        seen = Counter((record.level, record.text) for record in life.complaints)
        expected = Counter((*self.begins, *self.says))
        for complaint in self.repeats:
            if seen[complaint] > 0:
                expected[complaint] = seen[complaint]
            else:
                expected[complaint] = 1
        verdict.claim(
            "records of WARN or worse: what is wrong, and that only once",
            seen == expected,
            [f"missing: {level} {text}" for level, text in (expected - seen).elements()]
            + [f"too many: {level} {text}" for level, text in (seen - expected).elements()],
            [f"{level:<5} {text}" for level, text in expected],
        )
