"""What the drivers of several faults do and wait for."""

from __future__ import annotations

import re
from wardex_desk.events import PingAnswered
from wardex_desk.places import DESK, LOGS, PROGRAMS
from wardex_desk.scenarios_stage import Sign, Stage, feeds, writes
from wardex_desk.scenarios_trouble import DEAD, until_stable
from wardex_desk.waiting import now

# The longest times between two feeds that a supervisor may need, with what a busy machine adds. Each
# change of the system's state begins the second anew, and there may be two of them before a feed.
TICK_GAP_S = 3.2
# With a ping of pictor that nobody answers, and with one of corvane, too.
PICTOR_GAP_S = TICK_GAP_S + 1.0
PINGS_GAP_S = PICTOR_GAP_S + 2.2

NOT_CONNECTED = r"REDIS NOT CONNECTED !n"
WRITE_FAILED = r"redisPushLog: failed with err: \(\d+:[^)]+\)\n"

SUPERVISOR_PATH = f"{PROGRAMS}/wardex"
# Started below another folder, so that ps lists it under its name although a script starts it.
PLAIN_SUPERVISOR = "/opt/orvo/sbin/wardex"


def pinged(service: str) -> Sign:
    """A service is asked, whatever it answers."""
    return lambda event: isinstance(event, PingAnswered) and event.service == service


def goes_on(stage: Stage, pings: bool = True) -> None:
    """Supervision goes on: the watchdog is fed and both judged services are asked."""
    stage.await_sign("the watchdog fed again", feeds(), 15.0, times=2)
    if pings:
        for service in ("pictor", "corvane"):
            stage.await_sign(f"{service} pinged again", pinged(service), 15.0)


def answers_calls(stage: Stage) -> None:
    """The supervisor itself can be asked."""
    status, output = stage.device.run(
        *("dbus-send", "--system", "--print-reply", "--dest=com.orvo.wardex", "/"),
        "com.orvo.wardex.doPing",
    )
    stage.verdict.claim("the supervisor answers a ping", status == 0, output.splitlines())


def told(stage: Stage, pattern: str, times: int) -> None:
    """Standard error has it so many times."""
    errors = stage.device.instance.read(f"{LOGS}/wardex.err")
    stage.verdict.equal(
        f"told on standard error, {times} times: {pattern.strip()}",
        times,
        len(re.findall(pattern, errors)),
    )


def told_again_and_again(stage: Stage, pattern: str) -> None:
    """Standard error has it, once or more."""
    errors = stage.device.instance.read(f"{LOGS}/wardex.err")
    stage.verdict.claim(
        f"told on standard error: {pattern}",
        re.search(pattern, errors) is not None,
        errors.splitlines() or ["nothing"],
    )


def until_moment(stage: Stage, seconds: float) -> None:
    """Lets so much time pass: the moment itself is what the story is about."""
    end = now() + seconds
    stage.device.wait_for(lambda: now() >= end, seconds + 5.0, "a moment")


def in_background(stage: Stage, *words: str, output: str = "background") -> None:
    """Starts a program on the device and leaves it alone."""
    line = " ".join(words)
    stage.device.run("sh", "-c", f"setsid {line} </dev/null >{LOGS}/{output} 2>&1 &")


def desk_program(module: str, *arguments: str) -> tuple[str, ...]:
    """The words that start one of the desk's programs on the device."""
    return ("/usr/bin/python3", "-S", "-m", f"wardex_desk.{module}", *arguments)


def start_supervisor(stage: Stage, prefix: str = "") -> None:
    """Starts the supervisor of a device that was switched on without, by way of other commands."""
    instance = stage.device.instance
    if prefix:
        instance.remove(SUPERVISOR_PATH)
        plain = instance.path(PLAIN_SUPERVISOR)
        plain.parent.mkdir()
        plain.symlink_to(f"{DESK}/wardex")
        instance.write(
            SUPERVISOR_PATH, f"#!/bin/sh\nexec {prefix} {PLAIN_SUPERVISOR}\n", mode=0o755
        )
    stage.device.supervisor("start")


def supervisor_process(stage: Stage) -> str:
    """The supervisor's process id on the device."""
    return stage.device.run("/usr/bin/ps", "-C", "wardex", "-o", "pid=")[1].strip()


def pictor_dies(stage: Stage) -> None:
    """pictor says "down" until it is considered dead, and is well again when it was dealt with."""
    stage.device.order("pictor", "down")
    stage.await_sign("pictor considered dead", writes(DEAD[1]), 15.0)
    stage.device.order("pictor", "up")
    until_stable(stage, 30.0)
    goes_on(stage)
