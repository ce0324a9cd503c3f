"""What a log call costs."""

import contextlib
from pathlib import Path

from wardex_bench import box, callgrind, processes, servers, syscalls, timing
from wardex_bench.processes import Word
from wardex_bench.row import (
    Context,
    Result,
    Row,
    ours_at_most,
    ratio_at_least,
    ratio_at_most,
)

INSTRUCTIONS_STRETCH = 4000
# A run's seconds are long against its start, and short enough for many rounds.
TIMED_RECORDS = 4_000
PIECES = 4
TIMED_MASKED = 10_000_000
TIMED_SYSLOG = 20_000
# The configuration thread looks around once a second, which a run may see once more than another.
SYSCALL_TOLERANCE = 0.01

# Starts the box's syslogd and then the command; the box ends both.
BELOW_SYSLOGD = """
busybox syslogd -n -O /tmp/messages &
tries=0
until [ -S /dev/log ]; do
    tries=$((tries + 1))
    [ $tries -lt 500 ] || exit 1
    sleep 0.01
done
"$@"
"""


def _writes(context: Context, socket: Path, count: int) -> list[Word]:
    return [context.program("log-writes"), socket, str(count)]


def _bare_writes(context: Context, socket: Path, count: int) -> list[Word]:
    return [context.program("bare-redis-writes"), socket, str(count)]


def _masked(context: Context, socket: Path, count: int) -> list[Word]:
    return [context.program("log-masked"), socket, str(count)]


def _mutex(context: Context, count: int) -> list[Word]:
    return [context.program("bare-mutex"), str(count)]


def _below_syslogd(context: Context, command: list[Word]) -> list[Word]:
    return box.boxed(context, ["sh", "-c", BELOW_SYSLOGD, "sh", *command])


def _syslog_writes(context: Context, count: int) -> list[Word]:
    return [context.program("syslog-writes"), str(count)]


def _written_instructions(context: Context) -> float:
    with servers.redis_server(context) as socket:
        return callgrind.per_operation(
            context, lambda count: _writes(context, socket, count), 100, context.scaled(2100) + 100
        )


def write_instructions(context: Context) -> Result:
    """User-space instructions of a call that writes."""
    ours = _written_instructions(context)
    with servers.redis_server(context) as socket:
        bare = callgrind.per_operation(
            context,
            lambda count: _bare_writes(context, socket, count),
            100,
            context.scaled(2100) + 100,
        )
    stretch = "reached" if ours < INSTRUCTIONS_STRETCH else "not reached"
    note = f"stretch goal < {INSTRUCTIONS_STRETCH}: {stretch}; the yardstick formats no record"
    return Result(ours, bare, ours / bare, note)


def _throughput(context: Context, processor: int) -> Result:
    """Records per second, one after the other; Redis is on the last processor."""
    count = context.scaled(TIMED_RECORDS)
    with contextlib.ExitStack() as stack:
        with timing.on_processor(-1):
            socket = stack.enter_context(servers.redis_server(context))
        stack.enter_context(timing.on_processor(processor))
        compared = timing.compare(
            context,
            timing.reported(timing.real_time(_writes(context, socket, count))),
            timing.reported(timing.real_time(_bare_writes(context, socket, count))),
            PIECES,
        )
    return compared.result()


def write_throughput(context: Context) -> Result:
    """As on the device, with one processor for client and Redis."""
    return _throughput(context, -1)


def write_throughput_on_two(context: Context) -> Result:
    """With a processor for each."""
    return _throughput(context, 0)


def write_system_calls(context: Context) -> Result:
    """System calls of a call that writes."""
    with servers.redis_server(context) as socket:
        calls = syscalls.per_operation(
            context, lambda count: _writes(context, socket, count), 100, context.scaled(1000) + 100
        )
    writing = syscalls.sum_of(calls, syscalls.WRITING)
    reading = syscalls.sum_of(calls, syscalls.READING)
    total = sum(calls.values())
    note = f"{writing:.2f} writing, {reading:.2f} reading"
    others = total - writing - reading
    if abs(others) > SYSCALL_TOLERANCE:
        named = {name: count for name, count in calls.items() if abs(count) > SYSCALL_TOLERANCE}
        note += f", {others:.2f} others: {', '.join(f'{n} {c:.2f}' for n, c in named.items())}"
    exact = abs(writing - 1) <= SYSCALL_TOLERANCE and abs(reading - 1) <= SYSCALL_TOLERANCE
    # One of each and nothing else; a wrong pair that sums up to two is told apart here.
    return Result(total if exact else max(total, 2 + SYSCALL_TOLERANCE * 2), note=note)


def masked_time(context: Context) -> Result:
    """Time of a call that is masked out, against the pair that it needs."""
    count = context.scaled(TIMED_MASKED)
    with servers.redis_server(context) as socket:
        return timing.compare(
            context,
            timing.reported(_masked(context, socket, count)),
            timing.reported(_mutex(context, count)),
        ).result()


def masked_instructions(context: Context) -> Result:
    """Instructions of a masked call over those of the pair."""
    many = context.scaled(100_000) + 100
    with servers.redis_server(context) as socket:
        call = callgrind.per_operation(
            context, lambda count: _masked(context, socket, count), 100, many
        )
    pair = callgrind.per_operation(context, lambda count: _mutex(context, count), 100, many)
    return Result(call - pair, pair, note=f"{call:.1f} in all, {pair:.1f} for the pair")


def syslog_instructions(context: Context) -> Result:
    """Instructions of a call that writes, against syslog(3)."""
    ours = _written_instructions(context)
    figures = []
    for count in (100, context.scaled(2000) + 100):
        context.progress(f"syslog(3), callgrind, {count} times")
        report = context.scratch / "syslog.callgrind"
        command = callgrind.wrapped(_syslog_writes(context, count), report)
        processes.run(_below_syslogd(context, command))
        figures.append((count, callgrind.total(report.read_text(encoding="utf-8"))))
    (few, first), (many, second) = figures
    theirs = (second - first) / (many - few)
    return Result(ours, theirs, ours / theirs, "syslog(3) waits for no answer")


def syslog_throughput(context: Context) -> Result:
    """Messages per second against syslog(3)."""
    count = context.scaled(TIMED_SYSLOG)
    theirs = _below_syslogd(context, _syslog_writes(context, count))
    with timing.on_processor(-1), servers.redis_server(context) as socket:
        compared = timing.compare(
            context,
            timing.reported(_writes(context, socket, context.scaled(TIMED_RECORDS))),
            timing.reported(theirs),
        )
    return compared.result("busybox syslogd into memory")


ROWS: list[Row] = [
    Row(
        "log call that writes: instructions",
        "instr",
        ours_at_most(5500),
        write_instructions,
    ),
    Row(
        "log call that writes: throughput against bare hiredis",
        "records/s",
        ratio_at_least(1.10),
        write_throughput,
    ),
    Row(
        "log call that writes: throughput with Redis on another processor",
        "records/s",
        None,
        write_throughput_on_two,
    ),
    Row(
        "log call that writes: system calls",
        "calls",
        ours_at_most(2 + SYSCALL_TOLERANCE, "1 write, 1 read"),
        write_system_calls,
    ),
    Row("masked log call: time against a mutex pair", "ns", ratio_at_most(1.30), masked_time),
    Row(
        "masked log call: instructions over a mutex pair",
        "instr",
        ours_at_most(45),
        masked_instructions,
    ),
    Row(
        "log call that writes: instructions against syslog(3)",
        "instr",
        None,
        syslog_instructions,
    ),
    Row(
        "log call that writes: throughput against syslog(3)",
        "records/s",
        None,
        syslog_throughput,
    ),
]
