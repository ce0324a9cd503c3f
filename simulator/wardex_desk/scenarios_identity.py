"""Stories of who the device is: no-identity, and one for each family."""

from __future__ import annotations

from collections.abc import Sequence

from wardex_desk import judge_claims as claim
from wardex_desk import judge_texts as texts
from wardex_desk import judge_watchdog as watchdog
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_claims import STARTING, UNSTABLE
from wardex_desk.judge_evidence import SYSTEM, Life
from wardex_desk.scenarios_stage import Stage, enters, supervisor_ends
from wardex_desk.scenarios_trouble import PICTOR, judge_health, play_healthy
from wardex_desk.scenarios_types import Judge, Scenario

VISTOR = "com.orvo.vistor"


def play_no_identity(stage: Stage) -> None:
    """No module of the device can be identified."""
    stage.await_sign("the supervisor gone", supervisor_ends(), 15.0)


def judge_no_identity(verdict: Verdict, lives: Sequence[Life]) -> None:
    """The supervisor gives up before it touches anything."""
    claim.boots(verdict, lives, "power-on")
    life = lives[0]
    claim.complaints(
        verdict,
        life,
        ("WARN", texts.STARTS),
        ("WARN", texts.NO_FAMILY),
        ("FATAL", texts.GIVES_UP),
    )
    for text in (texts.STARTS, texts.NO_FAMILY, texts.GIVES_UP):
        claim.said(verdict, life, text, 1)
    verdict.equal("the supervisor ends with status 1", [1], life.endings)
    verdict.equal("no state machine is ever built", [], life.path(SYSTEM))
    verdict.equal("com.orvo.wardex never shows on the bus", [], life.owned("com.orvo.wardex"))
    claim.signals(verdict, life)
    claim.calls(verdict, life)
    watchdog.never_armed(verdict, life)


def judge_family(family: str) -> Judge:
    """A family with both judged services: as healthy, under its own name."""

    def judge(verdict: Verdict, lives: Sequence[Life]) -> None:
        claim.boots(verdict, lives, "power-on")
        judge_health(verdict, lives[0], family)

    return judge


def play_family_zm7xx(stage: Stage) -> None:
    """Long enough for the device to be found unstable."""
    stage.await_sign("the device unstable", enters("system", UNSTABLE), 20.0)


def judge_family_zm7xx(verdict: Verdict, lives: Sequence[Life]) -> None:
    """The judged services are not in this family's table: both count as dead all the time."""
    claim.boots(verdict, lives, "power-on")
    # Thousands of records a second may leave the driver behind: the first unstable second counts.
    unstable = [span.begin for span in lives[0].spans(SYSTEM) if span.state == UNSTABLE]
    life = lives[0].until(unstable[0] + 1.0) if unstable else lives[0]
    claim.starts(verdict, life)
    claim.said(verdict, life, texts.FAMILY["ZM7xx"], 1)
    claim.complaints_among(
        verdict,
        life,
        {
            ("WARN", texts.STARTS),
            ("WARN", texts.FAMILY["ZM7xx"]),
            *(("ERROR", texts.unknown_service(name)) for name in (VISTOR, PICTOR)),
        },
        {("WARN", texts.considered_dead(name)) for name in (VISTOR, PICTOR)},
    )
    for name in (VISTOR, PICTOR):
        claim.ever_said(verdict, life, texts.ping_interval(name, 0))
    claim.path(verdict, life, SYSTEM, STARTING, UNSTABLE)
    watchdog.ticks(verdict, life, STARTING, 6)
    claim.never_up(verdict, life, "pictor")
    claim.never_up(verdict, life, "corvane")
    claim.calls(verdict, life)
    watchdog.fed(verdict, life, at_least=6)


SCENARIOS = (
    Scenario(
        "no-identity",
        "no EEPROM names the device: the supervisor gives up with status 1",
        play_no_identity,
        judge_no_identity,
        plan=Plan(family="none"),
    ),
    Scenario(
        "family-zk4xx",
        "a ZK4XX camera: four services registered, both judged ones up",
        play_healthy,
        judge_family("ZK4XX"),
    ),
    Scenario(
        "family-zm7xx",
        "a ZM7xx device: wirl only, the judged services are unknown",
        play_family_zm7xx,
        judge_family_zm7xx,
        plan=Plan(family="ZM7xx"),
    ),
    Scenario(
        "family-zq9xx",
        "a ZQ9XX camera: corvane and pictor registered, both up",
        play_healthy,
        judge_family("ZQ9XX"),
        plan=Plan(family="ZQ9XX"),
    ),
)
