"""The system bus fails, or somebody is on it who should not be."""

from __future__ import annotations

from collections.abc import Callable

from wardex_desk.bus_gap import READY
from wardex_desk.faults_play import (
    PICTOR_GAP_S,
    PINGS_GAP_S,
    TICK_GAP_S,
    answers_calls,
    desk_program,
    goes_on,
    in_background,
    start_supervisor,
)
from wardex_desk.faults_redis import WITHOUT_SUPERVISOR
from wardex_desk.faults_types import Fault
from wardex_desk.firmware import Plan
from wardex_desk.places import LOGS
from wardex_desk.scenarios_stage import Stage, feeds, writes
from wardex_desk.scenarios_trouble import DEAD, until_stable

NO_NAME = ("ERROR", "Could not register DBus service com.orvo.wardex")
NO_OBJECT = ("ERROR", "Could not register DBus object")
TOO_MANY = ("WARN", "DbusCmd: 64 calls are waiting, refusing more")
# Longer than the watchdog's patience: a supervisor that is kept from feeding is found out.
FLOOD_S = 15.0
FLOOD_CALLS = 10_000


def goes_on_alone(stage: Stage) -> None:
    """Nobody answers: pictor is judged, down, and restarted; the watchdog is fed."""
    stage.await_sign("pictor considered dead", writes(DEAD[1]), 30.0)
    goes_on(stage, pings=False)


def crashes_at(word: str, times: int = 1) -> Callable[[Stage], None]:
    """A driver: the bus crashes when the supervisor's call with this word reaches it."""

    def play(stage: Stage) -> None:
        in_background(stage, *desk_program("bus_gap", word, str(times)), output="gap")
        stage.device.wait_for(
            lambda: READY in stage.device.instance.read(f"{LOGS}/gap"), 10.0, "the gap"
        )
        start_supervisor(stage)
        stage.await_sign("the watchdog fed", feeds(), 30.0)
        goes_on_alone(stage)

    return play


def play_in_flight(stage: Stage) -> None:
    """The bus ends while all is well."""
    until_stable(stage)
    stage.device.bus("stop")
    goes_on_alone(stage)


def play_owned(stage: Stage) -> None:
    """Another program has the supervisor's name."""
    in_background(stage, *desk_program("bus_squatter", "com.orvo.wardex"))
    status = ("dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.DBus", "/")
    stage.device.wait_for(
        lambda: "true"
        in stage.device.run(*status, "org.freedesktop.DBus.NameHasOwner", "string:com.orvo.wardex")[
            1
        ],
        10.0,
        "the name taken",
    )
    start_supervisor(stage)
    until_stable(stage)
    goes_on(stage)


def floods(member: str, *text: str) -> Callable[[Stage], None]:
    """A driver: a program calls the supervisor's method without end."""

    def play(stage: Stage) -> None:
        until_stable(stage)
        in_background(
            stage, *desk_program("bus_flood", f"{FLOOD_S}", member, *text), output="flood"
        )
        told = stage.device.instance
        stage.device.wait_for(
            lambda: told.read(f"{LOGS}/flood").strip() != "", FLOOD_S + 30.0, "the flood's end"
        )
        calls = told.read(f"{LOGS}/flood").strip()
        stage.verdict.claim(
            f"{FLOOD_CALLS} calls or more in {FLOOD_S:.0f} s",
            calls.isdecimal() and int(calls) >= FLOOD_CALLS,
            [calls],
            [f"{calls} calls"],
        )
        stage.look()
        goes_on(stage)
        answers_calls(stage)

    return play


ALONE = Plan(without=WITHOUT_SUPERVISOR | {"services"})

FAULTS = (
    Fault(
        "bus-killed-at-hello",
        "the bus crashes when the supervisor greets it: it goes on without",
        crashes_at("Hello"),
        PICTOR_GAP_S,
        plan=ALONE,
        says=(NO_NAME, NO_OBJECT, DEAD),
    ),
    Fault(
        "bus-killed-at-look-up",
        "the bus crashes when the supervisor asks for a service: it goes on without",
        crashes_at("GetNameOwner"),
        PICTOR_GAP_S,
        plan=ALONE,
        says=(NO_NAME, DEAD),
    ),
    Fault(
        "bus-killed-at-watch",
        "the bus crashes when the supervisor begins to watch names: it goes on without",
        crashes_at("AddMatch"),
        PICTOR_GAP_S,
        plan=ALONE,
        says=(NO_NAME, DEAD),
    ),
    Fault(
        "bus-killed-at-name",
        "the bus crashes when the supervisor asks for its name: it goes on without",
        crashes_at("RequestName"),
        PICTOR_GAP_S,
        plan=ALONE,
        says=(NO_NAME, DEAD),
    ),
    Fault(
        "bus-killed-at-ping",
        "the bus crashes in the middle of a ping: the ping ends with it",
        crashes_at("doPing"),
        PICTOR_GAP_S,
        plan=ALONE,
        says=(DEAD,),
    ),
    Fault(
        "bus-killed",
        "the bus ends under a healthy device: every ping fails at once, services are restarted",
        play_in_flight,
        PICTOR_GAP_S,
        repeats=(DEAD,),
    ),
    Fault(
        "bus-absent",
        "no bus at the start: told, and supervised without",
        goes_on_alone,
        PICTOR_GAP_S,
        plan=Plan(without=frozenset({"bus"})),
        says=(NO_NAME, NO_OBJECT, DEAD),
    ),
    Fault(
        "bus-name-owned",
        "another program owns the supervisor's name: told, and supervised nevertheless",
        play_owned,
        TICK_GAP_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        says=(NO_NAME,),
    ),
    Fault(
        "bus-flooded",
        "a program pings the supervisor as fast as the bus takes it",
        floods("doPing"),
        PINGS_GAP_S,
    ),
    Fault(
        "bus-flooded-with-work",
        "a program has the processes listed as fast as the bus takes it: told, and refused",
        floods("getServiceStatus", "com.orvo.pictor"),
        PINGS_GAP_S,
        says=(TOO_MANY,),
    ),
)
