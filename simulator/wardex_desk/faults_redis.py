"""The log's Redis fails: records are lost, supervision is not."""

from __future__ import annotations

from collections.abc import Sequence

from wardex_desk import judge_claims as claim
from wardex_desk.events import Availability, StandardError
from wardex_desk.faults_play import (
    NOT_CONNECTED,
    PICTOR_GAP_S,
    TICK_GAP_S,
    WRITE_FAILED,
    goes_on,
    in_background,
    start_supervisor,
    told,
    told_again_and_again,
)
from wardex_desk.faults_types import Fault
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_evidence import Life
from wardex_desk.places import CACHE_SOCKET, LOGS
from wardex_desk.scenarios_stage import Sign, Stage
from wardex_desk.scenarios_trouble import until_stable

CACHE = ("redis-cache",)
# How long the supervisor waits for a Redis that does not answer, before it goes on without.
PATIENCE_S = 2.0
SLOW_S = 0.4
SLOW_TIMES = 10
# The server as its command line shows it; the shell that looks for it must not find itself.
SERVER = f"[u]nixsocket:{CACHE_SOCKET}"


def announces(service: str, state: str) -> Sign:
    """The supervisor tells the bus a service's state."""
    return lambda event: (
        isinstance(event, Availability) and event.services.get(f"com.orvo.{service}") == state
    )


def judges_without_log(stage: Stage) -> None:
    """pictor goes down and comes back, and the bus is told of both."""
    stage.device.order("pictor", "down")
    stage.await_sign("pictor announced as down", announces("pictor", "down"), 15.0)
    stage.device.order("pictor", "up")
    stage.await_sign("pictor announced as up", announces("pictor", "up"), 15.0)
    goes_on(stage)


def loses_the_log(stage: Stage) -> None:
    """The loss is told in full once; what is lost later, by the one text for that."""
    judges_without_log(stage)
    told(stage, WRITE_FAILED, 1)
    told_again_and_again(stage, NOT_CONNECTED)


def play_killed(stage: Stage) -> None:
    """The server ends."""
    until_stable(stage)
    stage.device.redis("stop", CACHE)
    loses_the_log(stage)


def play_stopped(stage: Stage) -> None:
    """The server stands still; its sockets take what they are given and answer nothing."""
    until_stable(stage)
    stage.device.redis("hang", CACHE)
    loses_the_log(stage)


def play_stopped_at_start(stage: Stage) -> None:
    """Both servers stand still before the supervisor is started."""
    stage.device.redis("hang")
    start_supervisor(stage)
    stage.await_sign("both announced as up", announces("vistor", "up"), 30.0)
    goes_on(stage)
    told(stage, WRITE_FAILED, 1)


def play_restarted(stage: Stage) -> None:
    """The server is a new one, which the supervisor does not use."""
    until_stable(stage)
    stage.device.redis("restart", CACHE)
    loses_the_log(stage)
    with stage.device.connect_redis() as cache:
        stage.verdict.equal(
            "the new server gets no record", 0, cache.command("EXISTS", "LOG:ENTRIES")
        )


def play_full_disk(stage: Stage) -> None:
    """The server cannot save and refuses every write; the supervisor's records are void."""
    until_stable(stage)
    # What cannot be replaced cannot be saved, as on a disk without room.
    stage.device.instance.path("/tmp/dump.rdb").mkdir()
    stage.device.instance.write("/tmp/dump.rdb/occupied", "")
    with stage.device.connect_redis() as cache:
        cache.command("CONFIG", "SET", "save", "3600 1")
        cache.command("BGSAVE")
        stage.device.wait_for(
            lambda: "last_bgsave_status:err" in str(cache.command("INFO", "persistence")),
            10.0,
            "a server that cannot save",
        )
        before = cache.command("LLEN", "LOG:ENTRIES")
        judges_without_log(stage)
        stage.verdict.equal("no record is stored", before, cache.command("LLEN", "LOG:ENTRIES"))
    told(stage, "redisPushLog", 0)


def play_maxclients(stage: Stage) -> None:
    """The servers take no more clients when the supervisor starts."""
    for server in ("redis-cache", "redis-store"):
        with stage.device.connect_redis(server) as redis:
            redis.command("CONFIG", "SET", "maxclients", "1")
            if server == "redis-store":
                # The driver's own place is the last one.
                start_supervisor(stage)
                stage.await_sign("both announced as up", announces("vistor", "up"), 30.0)
    judges_without_log(stage)
    told(stage, WRITE_FAILED, 1)


def play_slow(stage: Stage) -> None:
    """The server answers, but late each time."""
    until_stable(stage)
    in_background(
        stage,
        f"sh -c 'for i in $(seq {SLOW_TIMES}); do pkill -STOP -f {SERVER} && echo stopped; "
        f"sleep {SLOW_S}; pkill -CONT -f {SERVER}; sleep 0.05; done; echo end'",
        output="slow",
    )
    judges_without_log(stage)
    told(stage, "redisPushLog", 0)
    stage.device.wait_for(
        lambda: "end" in stage.device.instance.read(f"{LOGS}/slow"), 30.0, "a server at its speed"
    )
    stage.verdict.equal(
        "the server was held up",
        ["stopped"] * SLOW_TIMES + ["end"],
        stage.device.instance.read(f"{LOGS}/slow").split(),
    )


def judge_whole_log(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Each step of pictor's is in the log."""
    steps = ("SuprStarting", "SuprUp", "SuprDown", "SuprStarting", "SuprUp")
    claim.path(verdict, lives[0], "pictor", *steps)


def judge_silent_store(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Nothing of the logger's diagnosis gets lost or comes twice."""
    lines = [e.text for e in lives[0].events if isinstance(e, StandardError)]
    verdict.claim("standard error is short", len(lines) <= 6, lines)


WITHOUT_SUPERVISOR = frozenset({"supervisor"})

FAULTS = (
    Fault(
        "redis-killed",
        "the log's Redis ends: told once, records are lost, supervision goes on",
        play_killed,
        PICTOR_GAP_S,
    ),
    Fault(
        "redis-stopped",
        "the log's Redis stands still: the supervisor waits once, then goes on without",
        play_stopped,
        PICTOR_GAP_S + PATIENCE_S,
        held_s=PATIENCE_S,
    ),
    Fault(
        "redis-stopped-at-start",
        "both Redis servers stand still before the supervisor starts: it starts nevertheless",
        play_stopped_at_start,
        PICTOR_GAP_S + PATIENCE_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        begins=(),
        also=judge_silent_store,
    ),
    Fault(
        "redis-restarted",
        "the log's Redis is restarted: the supervisor goes on without its records",
        play_restarted,
        PICTOR_GAP_S,
    ),
    Fault(
        "redis-full-disk",
        "the log's Redis cannot save and refuses writes: that is no failure of the supervisor",
        play_full_disk,
        TICK_GAP_S,
    ),
    Fault(
        "redis-maxclients",
        "both Redis servers take no more clients: the supervisor starts without log",
        play_maxclients,
        PICTOR_GAP_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        begins=(),
    ),
    Fault(
        "redis-slow",
        f"the log's Redis answers {1000 * SLOW_S:.0f} ms late: nothing is lost",
        play_slow,
        PICTOR_GAP_S + 4 * SLOW_S,
        also=judge_whole_log,
    ),
)
