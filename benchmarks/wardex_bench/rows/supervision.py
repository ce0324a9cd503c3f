"""What a ping, a quiet tick, a record's check and a query cost."""

import contextlib
import os
import subprocess
from pathlib import Path
from typing import Iterator, Mapping

from wardex_bench import box, callgrind, processes, servers
from wardex_bench.processes import Word
from wardex_bench.row import Context, Result, Row, ours_at_most, ratio_at_most

# The first runs of a program warm its heap and Qt's tables.
WARM_UP = 200
PINGS = 2000
CHECKS = 2000
QUERIES = 1000
CRC_LIMIT = 810

# Starts the box's quorl and then the command; the box ends both.
BESIDE_QUORL = """
"$1" 2>/dev/null &
shift
tries=0
until [ -S /tmp/quorld.sock ]; do
    tries=$((tries + 1))
    [ $tries -lt 500 ] || exit 1
    sleep 0.01
done
"$@"
"""


def _peer(context: Context, name: str) -> Path:
    """A service of the simulated device."""
    return context.daemon.parent / name


@contextlib.contextmanager
def _pictor(context: Context) -> Iterator[Mapping[str, str]]:
    """A pictor that is up on a bus of its own; answers the environment of its clients."""
    with servers.bus(context) as address:
        environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": address}
        ping = [
            *("dbus-send", f"--bus={address}", "--print-reply", "--dest=com.orvo.pictor"),
            *("/", "com.orvo.pictor.doPing"),
        ]
        # Its file name says which service it plays.
        service = context.scratch / "pictor"
        service.symlink_to(_peer(context, "simulated-service"))
        with processes.running([service], environment=environment):
            servers.wait_until(
                lambda: subprocess.run(ping, capture_output=True).returncode == 0, "pictor answers"
            )
            yield environment


def _per_ping(context: Context, environment: Mapping[str, str], *command: Word) -> float:
    return callgrind.per_operation(
        context,
        lambda count: [*command, str(count)],
        WARM_UP,
        WARM_UP + context.scaled(PINGS),
        environment,
    )


def ping(context: Context) -> Result:
    """A ping against Qt's blocking call through the bare proxy."""
    with _pictor(context) as environment:
        ours = _per_ping(context, environment, context.program("is-alive"))
        bare = _per_ping(context, environment, context.program("qt-ping"))
    return Result(ours, bare, ours / bare)


def quiet_tick(context: Context) -> Result:
    """A tick of a service that is up, and a bare ping."""
    with _pictor(context) as environment, servers.redis_server(context) as log:
        ours = _per_ping(context, environment, context.program("quiet-tick"), log)
        bare = _per_ping(context, environment, context.program("qt-ping"))
    return Result(ours, bare, ours / bare)


def record_check(context: Context) -> Result:
    """The checksum of one identification record."""
    return Result(
        callgrind.per_operation(
            context,
            lambda count: [context.program("record-crc"), str(count)],
            1,
            1 + context.scaled(CHECKS),
        )
    )


def _queries(context: Context, program: str, count: int) -> int:
    """Instructions of a program that asks quorl so often."""
    context.progress(f"{program}, callgrind, {count} times")
    report = context.scratch / program
    command = callgrind.wrapped([context.program(program), str(count)], report)
    quorl = _peer(context, "simulated-quorl")
    processes.run(box.boxed(context, ["sh", "-c", BESIDE_QUORL, "sh", quorl, *command]))
    return callgrind.total(report.read_text(encoding="utf-8"))


def _per_query(context: Context, program: str) -> float:
    many = context.scaled(QUERIES)
    few = _queries(context, program, WARM_UP)
    return (_queries(context, program, WARM_UP + many) - few) / many


def query(context: Context) -> Result:
    """A query of the quorl service against the same by hand."""
    ours = _per_query(context, "quorl-query")
    bare = _per_query(context, "socket-query")
    return Result(ours, bare, ours / bare)


ROWS: list[Row] = [
    Row("ping over the bus against a bare Qt proxy", "instr", ratio_at_most(1.03), ping),
    Row("quiet tick against the same", "instr", ratio_at_most(1.10), quiet_tick),
    Row("CRC-8 of one record", "instr", ours_at_most(CRC_LIMIT), record_check),
    Row("quorl query against the same by hand", "instr", ratio_at_most(1.00), query),
]
