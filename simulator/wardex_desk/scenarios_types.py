"""What a scenario is made of."""

from __future__ import annotations

from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, field

from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_evidence import Life
from wardex_desk.scenarios_stage import Stage

Judge = Callable[[Verdict, Sequence[Life]], None]


@dataclass(frozen=True)
class Scenario:
    """A story that a device plays without a person.

    plan:   the device.
    orders: what its services are told before the mains are switched on, by short name.
    play:   the driver; gives orders and waits for signs, each with a bound.
    judge:  claims what the rules say about such a device, from its journals alone.
    """

    name: str
    summary: str
    play: Callable[[Stage], None]
    judge: Judge
    plan: Plan = Plan()
    orders: Mapping[str, tuple[str, ...]] = field(default_factory=dict)
