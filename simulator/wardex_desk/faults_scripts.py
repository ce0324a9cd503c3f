"""A script or program that the supervisor calls fails: pictor's init script, or the process list."""

from __future__ import annotations

from collections.abc import Callable, Sequence

from wardex_desk.faults_play import PICTOR_GAP_S, TICK_GAP_S, goes_on, pictor_dies
from wardex_desk.faults_types import Fault
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_evidence import Life
from wardex_desk.places import SERVICE_SCRIPTS
from wardex_desk.scenarios_stage import Stage, enters, leaves_the_bus
from wardex_desk.scenarios_trouble import DEAD, until_stable
from wardex_desk.scenarios_types import Judge

SCRIPT = f"{SERVICE_SCRIPTS}/30_pictor"
HANG_S = 10.0
FLOOD_BYTES = 50_000_000
# What the supervisor's own work takes at most beside a script.
WORK_S = 4.0

# With the device's journal, so that a call can be seen, and its time told from the supervisor's own.
BEGINS = """#!/bin/sh
SERVICE=pictor
. /opt/orvo/etc/service-functions
journal "$1" begin
"""
ENDS = """journal "$1" end {0}
exit {0}
"""
PRINTS = f"""head -c {FLOOD_BYTES} /dev/zero | tr '\\0' x
head -c {FLOOD_BYTES} /dev/zero | tr '\\0' x >&2
"""
# The grandchild has both pipes and outlives the story.
LEAVES_GRANDCHILD = """sleep 60 &
echo started
"""


def called(status: int | None) -> Judge:
    """A claim: the script was called for pictor's end, and ended so; None for one that never did."""

    def judge(verdict: Verdict, lives: Sequence[Life]) -> None:
        calls = [(call.words, call.status) for call in lives[0].calls]
        verdict.claim(
            f"the script is called to stop pictor (status {status})",
            ("30_pictor stop", status) in calls,
            [f"{words}: {end}" for words, end in calls] or ["no call"],
        )

    return judge


def with_script(content: str, mode: int = 0o755) -> Callable[[Stage], None]:
    """A driver: pictor has to be stopped and has this for its init script."""

    def play(stage: Stage) -> None:
        stage.device.instance.write(SCRIPT, content, mode)
        until_stable(stage)
        pictor_dies(stage)

    return play


def play_missing(stage: Stage) -> None:
    """pictor has no script."""
    stage.device.instance.remove(SCRIPT)
    until_stable(stage)
    pictor_dies(stage)


def play_list_fails(stage: Stage, spoil: Callable[[Stage], None]) -> None:
    """pictor dies while nobody can list the processes; it is started nevertheless."""
    until_stable(stage)
    spoil(stage)
    stage.device.order("pictor", "crash")
    stage.await_sign("pictor gone from the bus", leaves_the_bus("pictor"), 8.0)
    stage.device.order("pictor", "up")
    stage.await_sign("pictor up again", enters("pictor", "SuprUp"), 20.0)
    goes_on(stage)


def play_list_missing(stage: Stage) -> None:
    """There is no ps."""
    play_list_fails(stage, lambda stage: stage.device.instance.remove("/bin/ps"))


def play_list_failing(stage: Stage) -> None:
    """ps says why it cannot."""
    failing = "#!/bin/sh\necho no list today >&2\nexit 3\n"
    play_list_fails(stage, lambda stage: stage.device.instance.write("/bin/ps", failing, 0o755))


def _script(
    name: str,
    summary: str,
    play: Callable[[Stage], None],
    gap_s: float,
    also: Judge | None = None,
    held_s: float = 0.0,
) -> Fault:
    plan = Plan(watchdog_ms=30_000)
    return Fault(name, summary, play, gap_s, plan=plan, says=(DEAD,), also=also, held_s=held_s)


FAULTS = (
    _script("script-missing", "a dead service has no script", play_missing, TICK_GAP_S),
    _script(
        "script-not-executable",
        "a dead service's script may not be executed",
        with_script("#!/bin/sh\nexit 0\n", 0o644),
        TICK_GAP_S,
    ),
    _script(
        "script-fails",
        "a dead service's script ends with 1",
        with_script(BEGINS + ENDS.format(1)),
        TICK_GAP_S,
        called(1),
    ),
    _script(
        "script-killed",
        "a dead service's script is killed",
        with_script(f"{BEGINS}kill -KILL $$\n"),
        TICK_GAP_S,
        called(None),
    ),
    _script(
        "script-prints",
        "a dead service's script prints 50 MB to each of its outputs",
        with_script(BEGINS + PRINTS + ENDS.format(0)),
        TICK_GAP_S + WORK_S,
        called(0),
    ),
    _script(
        "script-hangs",
        "a dead service's script needs 10 s, and nobody feeds the watchdog meanwhile",
        with_script(f"{BEGINS}sleep {HANG_S:.0f}\n" + ENDS.format(0)),
        HANG_S + PICTOR_GAP_S,
        called(0),
        held_s=HANG_S,
    ),
    _script(
        "script-leaves-grandchild",
        "a dead service's script leaves a process behind that holds its outputs",
        with_script(BEGINS + LEAVES_GRANDCHILD + ENDS.format(0)),
        TICK_GAP_S,
        called(0),
    ),
    Fault(
        "ps-missing",
        "there is no ps: told at each look, and dead services are started",
        play_list_missing,
        PICTOR_GAP_S,
        plan=Plan(own_bin=True),
        says=(DEAD,),
        repeats=(("ERROR", "isProcessRunning: stderr: "),),
    ),
    Fault(
        "ps-failing",
        "ps fails: told with its reason at each look, and dead services are started",
        play_list_failing,
        PICTOR_GAP_S,
        plan=Plan(own_bin=True),
        says=(DEAD,),
        repeats=(("ERROR", "isProcessRunning: stderr: no list today#"),),
    ),
)
