"""A supervised service fails in one of the ways that a program can."""

from __future__ import annotations

from wardex_desk.events import NameChanged
from wardex_desk.faults_play import (
    PICTOR_GAP_S,
    PINGS_GAP_S,
    TICK_GAP_S,
    answers_calls,
    goes_on,
    pinged,
)
from wardex_desk.faults_types import Fault
from wardex_desk.judge_texts import RESTARTS_PACKAGE
from wardex_desk.places import PROGRAMS, SERVICES
from wardex_desk.scenarios_stage import Sign, Stage, calls, enters, leaves_the_bus
from wardex_desk.scenarios_trouble import DEAD, until_stable

# Each but the last two leaves a service up, or costs it one strike.
GARBAGE = ("none", "swap", "int", "variant", "struct", "huge", "giant", "one", "three")
# Starts a service and never asks for its end: what is left of it stays in the list.
NEGLIGENT_PARENT = (
    "import signal, subprocess; "
    f"subprocess.Popen(['{PROGRAMS}/pictor'], start_new_session=True); "
    "signal.pause()"
)


def joins_the_bus(service: str) -> Sign:
    """A service's bus name has an owner."""
    name = SERVICES[service].bus_name
    return lambda event: isinstance(event, NameChanged) and event.name == name and event.owned


def play_hung(stage: Stage) -> None:
    """Both services take every call and answer none."""
    until_stable(stage)
    stage.device.signal("pictor", "stop")
    stage.device.signal("corvane", "stop")
    stage.await_sign("the watchdog's tick with both hung", enters("corvane", "SuprDown"), 40.0)
    stage.device.signal("pictor", "continue")
    stage.device.signal("corvane", "continue")
    until_stable(stage, 40.0)
    goes_on(stage)


def play_crashed(stage: Stage) -> None:
    """pictor dies."""
    until_stable(stage)
    stage.device.order("pictor", "crash")
    stage.await_sign("pictor gone from the bus", leaves_the_bus("pictor"), 8.0)
    stage.device.order("pictor", "up")
    until_stable(stage, 20.0)
    goes_on(stage)


def play_zombie(stage: Stage) -> None:
    """pictor dies and stays in the process list, because its parent does not care."""
    until_stable(stage)
    stage.device.run("/opt/orvo/etc/init.d/30_pictor", "stop")
    stage.device.run(
        "sh",
        "-c",
        f'setsid /usr/bin/python3 -S -c "{NEGLIGENT_PARENT}" </dev/null >/dev/null 2>&1 &',
    )
    stage.await_sign("pictor back on the bus", joins_the_bus("pictor"), 10.0)
    stage.await_sign("pictor pinged again", pinged("pictor"), 10.0)
    stage.device.signal("pictor", "kill")
    stage.await_sign("pictor down", enters("pictor", "SuprDown"), 15.0)
    stage.await_sign("the package restarted", calls("mf-optware restart"), 60.0)
    until_stable(stage, 30.0)
    goes_on(stage)


def play_garbage(stage: Stage) -> None:
    """pictor answers with everything but an answer."""
    until_stable(stage)
    stage.device.order("pictor", *(step for kind in GARBAGE for step in (f"garbage {kind}", "up")))
    stage.await_sign("pictor asked", pinged("pictor"), 60.0, times=2 * len(GARBAGE))
    goes_on(stage)
    answers_calls(stage)


FAULTS = (
    Fault(
        "service-hung",
        "both judged services stand still: pings end by the clock, both are restarted",
        play_hung,
        PINGS_GAP_S + 3.0,
        repeats=(DEAD,),
        held_s=PINGS_GAP_S - TICK_GAP_S,
    ),
    Fault(
        "service-crashed",
        "pictor dies: gone from the bus, restarted by its script",
        play_crashed,
        PICTOR_GAP_S,
        says=(DEAD,),
    ),
    Fault(
        "service-zombie",
        "pictor is dead but listed: only the restart of the package brings it back",
        play_zombie,
        PICTOR_GAP_S,
        repeats=(DEAD, ("FATAL", RESTARTS_PACKAGE)),
    ),
    Fault(
        "service-garbage",
        "pictor answers with wrong types, 0, 1 and 3 values, 1 MB and 10 MB",
        play_garbage,
        TICK_GAP_S,
    ),
)
