"""Stories of a camera that keeps or regains its health: healthy, hang, crash, slow-start, flapping.

"pictor" is the one in trouble; "corvane" is well throughout. Pings come every 1.0 s (pictor) and
2.2 s (corvane), so pictor is the first to be found up.
"""

from __future__ import annotations

from collections.abc import Sequence

from wardex_desk import judge_claims as claim
from wardex_desk import judge_texts as texts
from wardex_desk import judge_watchdog as watchdog
from wardex_desk.judge import Verdict
from wardex_desk.judge_claims import STABLE, STARTING, UNSTABLE
from wardex_desk.judge_evidence import SYSTEM, Life
from wardex_desk.scenarios_stage import Stage, answers, calls, enters, feeds, leaves_the_bus, writes
from wardex_desk.scenarios_types import Scenario

PICTOR = "com.orvo.pictor"
PING_TIMEOUT_S = 1.0

BOTH_UP = "pictor up, corvane up"
ONLY_CORVANE = "pictor down, corvane up"
ONLY_PICTOR = "pictor up, corvane down"

STARTED = (("WARN", texts.STARTS), ("WARN", texts.FAMILY["ZK4XX"]))
DEAD = ("WARN", texts.considered_dead(PICTOR))

# Long enough to show that nothing else follows.
AFTERMATH_FEEDS = 3


def until_stable(stage: Stage, within: float = 12.0) -> None:
    """Waits until all services that must be up are up."""
    stage.await_sign("all services up", enters("system", STABLE), within)


def aftermath(stage: Stage) -> None:
    """Lets the device go on for some ticks."""
    stage.await_sign("the watchdog fed", feeds(), 8.0, times=AFTERMATH_FEEDS)


def play_healthy(stage: Stage) -> None:
    """Nothing happens."""
    until_stable(stage)
    stage.await_sign("ten feeds in health", feeds(), 20.0, times=10)


def judge_healthy(verdict: Verdict, lives: Sequence[Life]) -> None:
    """The same for every family with both judged services."""
    claim.boots(verdict, lives, "power-on")
    judge_health(verdict, lives[0], "ZK4XX")


def judge_health(verdict: Verdict, life: Life, family: str) -> None:
    """A life in which every service is up and stays so."""
    claim.starts(verdict, life)
    claim.complaints(verdict, life, ("WARN", texts.STARTS), ("WARN", texts.FAMILY[family]))
    claim.said(verdict, life, texts.ping_interval("com.orvo.vistor", 2200), 2)
    claim.said(verdict, life, texts.ping_interval(PICTOR, 1000), 2)
    claim.path(verdict, life, "pictor", "SuprStarting", "SuprUp")
    claim.path(verdict, life, "corvane", "SuprStarting", "SuprUp")
    claim.path(verdict, life, SYSTEM, STARTING, STABLE)
    claim.said(verdict, life, texts.ping_failed(PICTOR), 0)
    claim.signals(verdict, life, ONLY_PICTOR, BOTH_UP)
    claim.calls(verdict, life)
    watchdog.fed(verdict, life, at_least=10)


def play_hang(stage: Stage) -> None:
    """pictor stops answering; a restart cures it."""
    until_stable(stage)
    stage.device.order("pictor", "hang")
    stage.await_sign("pictor stopped by its script", calls("30_pictor stop"), 25.0)
    stage.device.order("pictor", "up")
    until_stable(stage)
    aftermath(stage)


def judge_hang(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Four missed pings, two more chances, one stop and one restart."""
    life = lives[0]
    claim.boots(verdict, lives, "power-on")
    claim.starts(verdict, life)
    claim.said(verdict, life, texts.ping_failed(PICTOR), 4)
    claim.spaced(verdict, life, texts.ping_failed(PICTOR), 0.95, "each strike is a ping of its own")
    claim.said(verdict, life, texts.THRESHOLD, 1)
    claim.said(verdict, life, texts.not_registered(PICTOR), 0)
    judge_single_restart(verdict, life)
    claim.calls(verdict, life, "30_pictor stop", "30_pictor restart")
    watchdog.fed(verdict, life, held_up_s=PING_TIMEOUT_S)


def judge_single_restart(verdict: Verdict, life: Life) -> None:
    """pictor goes down once, is restarted alone and comes back."""
    claim.complaints(verdict, life, *STARTED, DEAD)
    claim.said(verdict, life, DEAD[1], 1)
    claim.path(
        verdict, life, "pictor", "SuprStarting", "SuprUp", "SuprDown", "SuprStarting", "SuprUp"
    )
    claim.path(verdict, life, "corvane", "SuprStarting", "SuprUp")
    claim.path(verdict, life, SYSTEM, STARTING, STABLE, UNSTABLE, STABLE)
    claim.patience(verdict, life, "pictor", 2 * 1.0)
    claim.in_order(
        verdict, life, DEAD[1], "30_pictor restart", "SuprStarting::entry (com.orvo.pictor)"
    )
    claim.signals(verdict, life, ONLY_PICTOR, BOTH_UP, ONLY_CORVANE, BOTH_UP)


def play_crash(stage: Stage) -> None:
    """pictor dies; its script starts it again."""
    until_stable(stage)
    stage.device.order("pictor", "crash")
    stage.await_sign("pictor gone from the bus", leaves_the_bus("pictor"), 8.0)
    stage.device.order("pictor", "up")
    until_stable(stage, 20.0)
    aftermath(stage)


def judge_crash(verdict: Verdict, lives: Sequence[Life]) -> None:
    """A service that has left the bus gets no further strike, and nothing that runs to be stopped."""
    life = lives[0]
    claim.boots(verdict, lives, "power-on")
    claim.starts(verdict, life)
    claim.said(verdict, life, texts.ping_failed(PICTOR), 2)
    claim.said(verdict, life, texts.not_registered(PICTOR), 1)
    claim.said(verdict, life, texts.THRESHOLD, 0)
    judge_single_restart(verdict, life)
    claim.calls(verdict, life, "30_pictor restart")
    watchdog.fed(verdict, life)


def play_slow_start(stage: Stage) -> None:
    """pictor needs all the patience there is, and later starts once more on its own."""
    until_stable(stage, 15.0)
    stage.device.order("pictor", "starting", "starting", "up")
    stage.await_sign("pictor starting again", enters("pictor", "SuprStarting"), 5.0)
    stage.await_sign("pictor up again", enters("pictor", "SuprUp"), 8.0)
    aftermath(stage)


def judge_slow_start(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Six pings of "starting" are forgiven; the seventh would be one too many."""
    life = lives[0]
    claim.boots(verdict, lives, "power-on")
    claim.starts(verdict, life)
    claim.path(verdict, life, "pictor", "SuprStarting", "SuprUp", "SuprStarting", "SuprUp")
    claim.path(verdict, life, "corvane", "SuprStarting", "SuprUp")
    claim.path(verdict, life, SYSTEM, STARTING, UNSTABLE, STABLE)
    watchdog.ticks(verdict, life, STARTING, 6)
    claim.patience(verdict, life, "pictor", 7 * 1.0, state="SuprStarting")
    claim.said(verdict, life, texts.RUN_LEVEL_STARTING, 1)
    claim.complaints(verdict, life, *STARTED, ("WARN", texts.suspicious(PICTOR)))
    claim.signals(verdict, life, ONLY_CORVANE, BOTH_UP, BOTH_UP)
    claim.calls(verdict, life)
    watchdog.fed(verdict, life)


# One flap: down, then a slow start; unstable for four or five ticks, then up for one ping.
FLAP = ("down", "down", "starting", "starting", "starting", "up", "up")


def play_flapping(stage: Stage) -> None:
    """Three strikes that are forgiven, then up and down until the package is restarted."""
    until_stable(stage)
    stage.device.order("pictor", "hang", "hang", "hang", "up")
    stage.await_sign("three strikes", writes(texts.ping_failed(PICTOR)), 12.0, times=3)
    stage.await_sign("pictor up after all", answers("pictor", "up"), 5.0)
    stage.device.order("pictor", *FLAP * 4)
    stage.await_sign("the package restarted", calls("mf-optware restart"), 60.0)
    stage.device.order("pictor", "up")
    until_stable(stage, 30.0)
    aftermath(stage)


def judge_flapping(verdict: Verdict, lives: Sequence[Life]) -> None:
    """The unstable seconds of several short periods add up: the eleventh restarts the package."""
    life = lives[0]
    claim.boots(verdict, lives, "power-on")
    claim.starts(verdict, life)
    claim.said(verdict, life, texts.ping_failed(PICTOR), 3)
    claim.said(verdict, life, texts.THRESHOLD, 0)
    claim.said(verdict, life, texts.RUN_LEVEL_DOWN, 3)
    claim.path(
        verdict,
        life,
        SYSTEM,
        *(STARTING, STABLE, UNSTABLE, STABLE, UNSTABLE, STABLE, UNSTABLE),
        *(STARTING, STABLE),
    )
    watchdog.ticks_in_all(verdict, life, UNSTABLE, 11)
    claim.complaints(verdict, life, *STARTED, ("FATAL", texts.RESTARTS_PACKAGE))
    claim.said(verdict, life, texts.RESTARTS_PACKAGE, 1)
    claim.syslog(verdict, life, texts.RESTARTS_PACKAGE)
    claim.calls(verdict, life, "mf-optware restart")
    claim.ends_up(verdict, life, "pictor", "corvane")
    watchdog.fed(verdict, life, held_up_s=PING_TIMEOUT_S)


SCENARIOS = (
    Scenario(
        "healthy",
        "every service is up: nothing to do but to feed the watchdog",
        play_healthy,
        judge_healthy,
    ),
    Scenario(
        "hang",
        "pictor stops answering: four strikes, two more chances, stop and restart",
        play_hang,
        judge_hang,
    ),
    Scenario(
        "crash",
        "pictor dies: gone from the bus, restarted by its script",
        play_crash,
        judge_crash,
    ),
    Scenario(
        "slow-start",
        'pictor answers "starting" six times, and later twice more: patience, no script',
        play_slow_start,
        judge_slow_start,
        orders={"pictor": ("starting",) * 6 + ("up",)},
    ),
    Scenario(
        "flapping",
        "pictor comes and goes: eleven unstable seconds in all restart the package",
        play_flapping,
        judge_flapping,
    ),
)
