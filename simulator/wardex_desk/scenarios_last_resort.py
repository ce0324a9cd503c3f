"""Stories of a camera beyond a service's restart: dead, developer, supervisor-killed."""

from __future__ import annotations

from collections.abc import Sequence

from wardex_desk import judge_claims as claim
from wardex_desk import judge_texts as texts
from wardex_desk import judge_watchdog as watchdog
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_claims import REBOOT, STABLE, STARTING, UNSTABLE
from wardex_desk.judge_evidence import SYSTEM, Life
from wardex_desk.scenarios_stage import (
    Stage,
    answers,
    boots,
    calls,
    enters,
    feeds,
    resets,
    supervisor_ends,
)
from wardex_desk.scenarios_trouble import (
    BOTH_UP,
    DEAD,
    ONLY_CORVANE,
    ONLY_PICTOR,
    PICTOR,
    STARTED,
    aftermath,
    judge_health,
    until_stable,
)
from wardex_desk.scenarios_types import Scenario

# Six ticks of start and eleven of unrest, before each of three package restarts and the reboot.
STARTING_TICKS = 6
UNSTABLE_TICKS = 11
ROUNDS = 4
ROUND_S = STARTING_TICKS + UNSTABLE_TICKS
# What a busy machine and the package script may add to a round.
ROUND_BOUND_S = ROUND_S + 8.0

WATCHDOG_S = 4.0


def play_dead(stage: Stage) -> None:
    """pictor says "down" for ever, whatever is restarted."""
    stage.await_sign("the reboot", calls("reboot"), ROUNDS * ROUND_BOUND_S)
    stage.await_sign("the device booting again", boots("reboot"), 20.0)
    stage.await_sign("the watchdog fed again", feeds(), 20.0)


def judge_dead(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Three package restarts, then the reboot; single restarts only while the device is unstable."""
    claim.boots(verdict, lives, "power-on", "reboot")
    life = lives[0]
    claim.starts(verdict, life)
    claim.path(verdict, life, SYSTEM, *(STARTING, UNSTABLE) * ROUNDS, REBOOT)
    watchdog.ticks(verdict, life, STARTING, STARTING_TICKS)
    watchdog.ticks(verdict, life, UNSTABLE, UNSTABLE_TICKS)
    restart = ("FATAL", texts.RESTARTS_PACKAGE)
    claim.complaints(
        verdict,
        life,
        *STARTED,
        *(DEAD, restart) * (ROUNDS - 1),
        DEAD,
        ("EMERG", texts.TOO_MANY_RESTARTS),
        ("EMERG", texts.RESTARTS_SYSTEM),
    )
    claim.said(verdict, life, texts.RESTARTS_PACKAGE, ROUNDS - 1)
    claim.said(verdict, life, texts.TOO_MANY_RESTARTS, 1)
    claim.said(verdict, life, texts.RESTARTS_SYSTEM, 1)
    claim.syslog(
        verdict,
        life,
        *(texts.RESTARTS_PACKAGE,) * (ROUNDS - 1),
        texts.RESTARTS_SYSTEM_SYSLOG,
    )
    claim.calls_per_round(
        verdict,
        life,
        ("30_pictor stop", "30_pictor restart"),
        ("mf-optware restart",) * (ROUNDS - 1) + ("reboot",),
    )
    claim.only_in(verdict, life, UNSTABLE, DEAD[1])
    # Two bad pings in SuprDown, and one in SuprStarting to get there again.
    claim.spaced(verdict, life, DEAD[1], 2.85, "a restarted service gets its chance")
    claim.never_up(verdict, life, "pictor")
    watchdog.fed(verdict, life)
    reboot = next((call.begin for call in life.calls if call.words == "reboot"), None)
    watchdog.not_fed_after(verdict, life, reboot, "the reboot command")
    if len(lives) > 1:
        down = lives[1].events[0].at - reboot if reboot is not None else 0.0
        verdict.claim(
            "the device takes longer to go down than a feed would take to come",
            down > watchdog.TICK_S,
            [f"it took {down:.2f} s"],
        )
        claim.starts(verdict, lives[1])


def play_developer(stage: Stage) -> None:
    """As dead, on a developer's device; in the end pictor is well."""
    stage.await_sign("the state of reboot", enters("system", REBOOT), ROUNDS * ROUND_BOUND_S)
    stage.await_sign("pictor still pinged", answers("pictor", "down"), 8.0, times=3)
    stage.device.order("pictor", "up")
    until_stable(stage)
    stage.await_sign("pictor still pinged", answers("pictor", "up"), 8.0, times=2)


def judge_developer(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Every judgement is made and written once; nothing is done."""
    claim.boots(verdict, lives, "power-on")
    life = lives[0]
    claim.starts(verdict, life, texts.STARTS_AS_DEVELOPER)
    claim.path(verdict, life, SYSTEM, *(STARTING, UNSTABLE) * ROUNDS, REBOOT, STABLE)
    claim.lasts(verdict, life, STARTING, STARTING_TICKS)
    claim.lasts(verdict, life, UNSTABLE, UNSTABLE_TICKS)
    claim.path(verdict, life, "pictor", "SuprStarting", "SuprDown", "SuprStarting", "SuprUp")
    claim.path(verdict, life, "corvane", "SuprStarting", "SuprUp")
    once = (
        ("WARN", texts.considered_dead_as_developer(PICTOR)),
        ("FATAL", texts.WOULD_RESTART_PACKAGE),
        ("EMERG", texts.TOO_MANY_RESTARTS),
        ("EMERG", texts.WOULD_RESTART_SYSTEM),
    )
    claim.complaints(
        verdict,
        life,
        ("WARN", texts.STARTS_AS_DEVELOPER),
        ("WARN", texts.FAMILY["ZK4XX"]),
        *once,
    )
    for _, text in once:
        claim.said(verdict, life, text, 1)
    claim.syslog(verdict, life, texts.WOULD_RESTART_PACKAGE, texts.WOULD_RESTART_SYSTEM_SYSLOG)
    claim.calls(verdict, life)
    watchdog.never_armed(verdict, life)
    claim.signals(verdict, life, "pictor down, corvane down", ONLY_CORVANE, BOTH_UP)


def play_supervisor_killed(stage: Stage) -> None:
    """The supervisor is killed; only the watchdog is left."""
    until_stable(stage)
    aftermath(stage)
    stage.device.supervisor("kill")
    stage.await_sign("the supervisor gone", supervisor_ends(), 5.0)
    stage.await_sign("the watchdog's reset", resets(), WATCHDOG_S + 4.0)
    stage.await_sign("the device booting again", boots("watchdog"), 20.0)
    until_stable(stage)
    stage.await_sign("ten feeds in health", feeds(), 20.0, times=10)


def judge_supervisor_killed(verdict: Verdict, lives: Sequence[Life]) -> None:
    """The watchdog counts on without the supervisor and resets the device, which is well again."""
    claim.boots(verdict, lives, "power-on", "watchdog")
    life = lives[0]
    claim.starts(verdict, life)
    claim.complaints(verdict, life, *STARTED)
    claim.path(verdict, life, SYSTEM, STARTING, STABLE)
    claim.signals(verdict, life, ONLY_PICTOR, BOTH_UP)
    claim.calls(verdict, life)
    watchdog.fed(verdict, life)
    verdict.equal("the supervisor is killed by SIGKILL (status 137)", [128 + 9], life.endings)
    watchdog.reset_after(verdict, life, WATCHDOG_S)
    if len(lives) > 1:
        judge_health(verdict, lives[1], "ZK4XX")


SCENARIOS = (
    Scenario(
        "dead",
        "pictor cannot be revived: three package restarts, then the reboot (80 s)",
        play_dead,
        judge_dead,
        orders={"pictor": ("down",)},
    ),
    Scenario(
        "supervisor-killed",
        "the supervisor is killed: the watchdog counts on and resets the device",
        play_supervisor_killed,
        judge_supervisor_killed,
        plan=Plan(watchdog_ms=int(WATCHDOG_S * 1000)),
    ),
    Scenario(
        "developer",
        "as dead, on a developer's device: every line once, and nothing is done (80 s)",
        play_developer,
        judge_developer,
        plan=Plan(developer=True),
        orders={"pictor": ("down",)},
    ),
)
