"""The supervisor's own process is refused what it needs, or gets a signal."""

from __future__ import annotations

import random
from collections.abc import Callable, Sequence
from signal import Signals

from wardex_desk import judge_claims as claim
from wardex_desk import judge_watchdog as watchdog
from wardex_desk.events import WatchdogEvent
from wardex_desk.faults_play import (
    PICTOR_GAP_S,
    TICK_GAP_S,
    goes_on,
    pictor_dies,
    start_supervisor,
    supervisor_process,
    until_moment,
)
from wardex_desk.faults_redis import WITHOUT_SUPERVISOR
from wardex_desk.faults_types import Fault
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_claims import STABLE
from wardex_desk.judge_evidence import SYSTEM, Life
from wardex_desk.scenarios_stage import (
    Sign,
    Stage,
    boots,
    leaves_the_bus,
    resets,
    supervisor_ends,
)
from wardex_desk.scenarios_trouble import DEAD, STARTED, until_stable

WATCHDOG_MS = 2000
PAUSE_S = 2.0
SEED = 2026
MOMENTS_SHORT = 20
MOMENTS_OF_OTHERS = 3
MOMENTS_LONG = 200
SOAK_PARTS = 4
# A life of this length has been through its start and its first pings, and is stable at its end.
LIFE_S = 3.0
PIPE_SIGNALS = 20
NO_LIST = ("ERROR", "isProcessRunning: stderr: ")

# An ordinary user cannot give up what he does not have, and need not.
LESS = 'sh -c \'setpriv --bounding-set=-{0} true && exec setpriv --bounding-set=-{0} {1} "$0" || exec {1} "$0"\''


def opens_watchdog() -> Sign:
    """The watchdog is armed."""
    return lambda event: isinstance(event, WatchdogEvent) and event.what == "open"


def refused(capability: str, limits: str) -> Callable[[Stage], None]:
    """A driver: the supervisor starts without a right of root."""

    def play(stage: Stage) -> None:
        start_supervisor(stage, LESS.format(capability, f"prlimit {limits}"))
        until_stable(stage, 20.0)
        goes_on(stage)

    return play


def judge_refusal(text: str) -> Callable[[Verdict, Sequence[Life]], None]:
    """The refusal is told once."""

    def judge(verdict: Verdict, lives: Sequence[Life]) -> None:
        told = [refusal for refusal in lives[0].refusals if refusal.startswith(text)]
        verdict.claim(f"told once: {text}", len(told) == 1, lives[0].refusals)

    return judge


def play_no_descriptors(stage: Stage) -> None:
    """Not one descriptor is left when a service must be restarted; later there are some again."""
    until_stable(stage)
    process = supervisor_process(stage)
    limit = ("prlimit", "--pid", process)
    stage.device.run(*limit, "--nofile=3:4096")
    pictor_dies(stage)
    stage.device.run(*limit, "--nofile=4096:4096")
    stage.device.order("pictor", "crash")
    stage.await_sign("pictor gone from the bus", leaves_the_bus("pictor"), 8.0)
    stage.device.order("pictor", "up")
    until_stable(stage, 20.0)
    goes_on(stage)


def play_no_descriptors_at_start(stage: Stage) -> None:
    """There are not enough descriptors to begin with: the supervisor says so and ends."""
    start_supervisor(stage, "prlimit --nofile=4")
    stage.await_sign("the supervisor gone", supervisor_ends(), 15.0)
    errors = stage.device.instance.read("/log/wardex.err")
    stage.verdict.claim("it says why", "Too many open files" in errors, [errors])


def play_pipe_signals(stage: Stage) -> None:
    """Signals of broken pipes arrive at random moments."""
    until_stable(stage)
    moments = random.Random(SEED)
    process = supervisor_process(stage)
    sent = 0
    for _ in range(PIPE_SIGNALS):
        until_moment(stage, moments.uniform(0.0, 2 * LIFE_S / PIPE_SIGNALS))
        sent += stage.device.run("kill", "-PIPE", process)[0] == 0
    stage.verdict.equal("the signals reach it", PIPE_SIGNALS, sent)
    goes_on(stage)


def play_paused(stage: Stage) -> None:
    """The supervisor stands still at random moments, for less than the watchdog allows."""
    until_stable(stage)
    moments = random.Random(SEED)
    for _ in range(2):
        until_moment(stage, moments.uniform(0.0, 1.0))
        stage.device.supervisor("stop")
        until_moment(stage, PAUSE_S)
        stage.device.supervisor("continue")
        goes_on(stage)


def play_stopped(stage: Stage) -> None:
    """The supervisor stands still for ever."""
    until_stable(stage)
    until_moment(stage, random.Random(SEED).uniform(0.0, 1.0))
    stage.device.supervisor("stop")
    await_reset(stage)
    until_stable(stage)
    goes_on(stage)


def await_reset(stage: Stage) -> None:
    """The watchdog resets the device, which boots again."""
    stage.await_sign("the watchdog's reset", resets(), WATCHDOG_MS / 1000 + 5.0)
    stage.await_sign("the device booting again", boots("watchdog"), 20.0)


def ended_by(signal: str, times: int, seed: int) -> Callable[[Stage], None]:
    """A driver: a signal ends the supervisor at random moments of its life, so many times."""

    def play(stage: Stage) -> None:
        moments = random.Random(seed)
        for _ in range(times):
            stage.await_sign("the watchdog armed", opens_watchdog(), 20.0)
            until_moment(stage, moments.uniform(0.0, LIFE_S))
            stage.device.run("pkill", f"-{signal}", "-x", "wardex")
            await_reset(stage)
        until_stable(stage, 20.0)
        goes_on(stage)

    return play


def judge_ends(status: int) -> Callable[[Verdict, Sequence[Life]], None]:
    """Each life starts clean, ends by the signal and is followed by a reset in time."""

    def judge(verdict: Verdict, lives: Sequence[Life]) -> None:
        wrong: list[str] = []
        for number, life in enumerate(lives):
            is_last = number == len(lives) - 1
            each = Verdict()
            claim.starts(each, life)
            claim.complaints(each, life, *STARTED)
            each.equal("the signal ends it", [] if is_last else [status], life.endings)
            if not is_last:
                watchdog.reset_after_kill(each, life, WATCHDOG_MS / 1000)
            wrong += [
                f"life {number + 1}: {finding.claim} {' '.join(finding.evidence)}"
                for finding in each.findings
                if finding.holds is False
            ]
        verdict.claim(
            "each life starts clean and each end is followed by a reset", not wrong, wrong
        )
        verdict.equal("the last one is well", STABLE, (lives[-1].path(SYSTEM) or ["nothing"])[-1])

    return judge


def _ended(name: str, what: str, signal: Signals, times: int, seed: int = SEED) -> Fault:
    status = 128 + signal.value
    return Fault(
        name,
        f"{what} at {times} random moments: a reset and a clean start each time",
        ended_by(signal.name.removeprefix("SIG"), times, seed),
        TICK_GAP_S,
        plan=Plan(watchdog_ms=WATCHDOG_MS),
        boots=("power-on", *("watchdog",) * times),
        endings=(status,),
        also=judge_ends(status),
    )


def _killed(name: str, times: int, seed: int = SEED) -> Fault:
    return _ended(name, "the supervisor is killed", Signals.SIGKILL, times, seed)


FAULTS = (
    Fault(
        "no-memory-lock",
        "memory may not be locked: told, and supervised",
        refused("ipc_lock", "--memlock=65536"),
        TICK_GAP_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        also=judge_refusal("mlockall() failed: ("),
    ),
    Fault(
        "no-real-time",
        "real-time scheduling is refused: told, and supervised",
        refused("sys_nice", "--rtprio=0"),
        TICK_GAP_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        also=judge_refusal("sched_setscheduler() failed: (Operation not permitted)"),
    ),
    Fault(
        "no-descriptors",
        "no descriptor is left: services are not restarted until there are some again",
        play_no_descriptors,
        PICTOR_GAP_S,
        says=(DEAD, DEAD),
        repeats=(NO_LIST,),
    ),
    Fault(
        "no-descriptors-at-start",
        "no descriptor is left for the start: the supervisor says so and ends",
        play_no_descriptors_at_start,
        TICK_GAP_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        begins=(),
        endings=(128 + 6,),
    ),
    _ended("sigterm", "SIGTERM ends the supervisor", Signals.SIGTERM, MOMENTS_OF_OTHERS),
    _ended("sighup", "SIGHUP ends the supervisor", Signals.SIGHUP, MOMENTS_OF_OTHERS, SEED + 1),
    Fault(
        "sigpipe",
        f"SIGPIPE comes at {PIPE_SIGNALS} random moments and does nothing",
        play_pipe_signals,
        TICK_GAP_S,
    ),
    Fault(
        "paused",
        f"the supervisor stands still for {PAUSE_S:.0f} s at random moments, and goes on",
        play_paused,
        TICK_GAP_S + PAUSE_S,
        held_s=PAUSE_S,
    ),
    Fault(
        "stopped",
        "the supervisor stands still for ever: the watchdog resets the device",
        play_stopped,
        TICK_GAP_S,
        plan=Plan(watchdog_ms=WATCHDOG_MS),
        boots=("power-on", "watchdog"),
    ),
    _killed("killed", MOMENTS_SHORT),
)

# Side by side, so that they take minutes and not an hour.
SOAKS = tuple(
    _killed(f"killed-soak-{part}", MOMENTS_LONG // SOAK_PARTS, SEED + part)
    for part in range(1, SOAK_PARTS + 1)
)
