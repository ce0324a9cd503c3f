"""What the whole daemon costs: memory, start, idling."""

import re
import statistics
import time
from dataclasses import dataclass
from pathlib import Path

from wardex_bench import callgrind, camera, packages, processes, servers, timing
from wardex_bench.camera import Profile, install, run
from wardex_bench.row import (
    Context,
    Goal,
    NotHere,
    Result,
    Row,
    Unmeasured,
    ours_at_most,
    ratio_at_most,
)

PRIVATE_LIMIT_KIB = 2048
LOCKED_LIMIT_KIB = 57_000
LOCKED_RATIO = 1.01
STACK_LIMIT_KIB = 256
MONIT_FACTOR = 10.0

# Both ping intervals, 1 s and 2.2 s, end together after so many seconds.
IDLE_SECONDS = 11
# The window begins after this many pings: all is up, and it ends far from any timer's tick.
SETTLED_PINGS = 8
SHORT_SECONDS = 1
SHORT_PINGS = 1
# Both services have been found up by then.
STABLE_PINGS = 3
BETWEEN_TICKS = 0.5

# The shortest of them counts: what else the machine does can only add.
STARTS_PER_ROUND = 5
# The supervisor asks for its name by a call of its own, at the end of this.
OUR_NAME_OWNED = "*DbusCmd::DbusCmd(*"
QT_NAME_OWNED = "QDBusConnection::registerService*"
SD_NAME_OWNED = "sd_bus_request_name*"

_measured: dict[Path, float] = {}

MONIT = """set daemon 1
set log {folder}/log
set idfile {folder}/id
set statefile {folder}/state
set pidfile {folder}/self
check process supervised with pidfile {folder}/supervised
"""
WATCHDOG = """interval = 1
log-dir = /log
pidfile = /tmp/pictor.pid
"""


@dataclass(frozen=True)
class Memory:
    """In KiB: /proc's figures of the settled daemon; stack is the smallest of its threads'."""

    private_dirty: float
    locked: float
    resident: float
    stack: float


def _kib(text: str, field: str) -> float:
    found = re.search(rf"^{field}:\s*(\d+) kB$", text, re.MULTILINE)
    if not found:
        raise Unmeasured(f"the kernel tells no {field}")
    return float(found[1])


def _thread_stacks(maps: str) -> list[float]:
    """Areas with a guard page below, which the C library makes for threads only."""
    areas = re.findall(r"^(\w+)-(\w+) (\S+) \S+ \S+ 0 *$", maps, re.MULTILINE)
    return [
        (int(end, 16) - int(begin, 16)) / 1024
        for (_, guard_end, guard), (begin, end, kind) in zip(areas, areas[1:])
        if guard_end == begin and (guard, kind) == ("---p", "rw-p")
    ]


def _locked_kib(status: str) -> float:
    locked = _kib(status, "VmLck")
    if locked == 0:
        raise NotHere("this user may not lock memory, so memory is not as on the device")
    return locked


def _memory(context: Context) -> Memory:
    with camera.camera(context) as device:
        device.power_on()
        camera.await_pings(device, STABLE_PINGS)
        folder = f"/proc/{camera.process(device)}"
        status = run(device, "cat", f"{folder}/status")
        stacks = _thread_stacks(run(device, "cat", f"{folder}/maps"))
        if not stacks:
            raise Unmeasured("the daemon has no thread stacks")
        return Memory(
            _kib(run(device, "cat", f"{folder}/smaps_rollup"), "Private_Dirty"),
            _locked_kib(status),
            _kib(status, "VmRSS"),
            min(stacks),
        )


def _private_memory(context: Context) -> Result:
    memory = _memory(context)
    return Result(
        memory.private_dirty if memory.stack >= STACK_LIMIT_KIB else None,
        note=f"smallest thread stack: {memory.stack:g} KiB",
    )


def _locked_memory(context: Context) -> Result:
    memory = _memory(context)
    return Result(memory.locked, memory.resident, memory.locked / memory.resident)


def _is_locked_well(result: Result) -> bool:
    return (
        result.ours is not None
        and result.ratio is not None
        and result.ours <= LOCKED_LIMIT_KIB
        and result.ratio <= LOCKED_RATIO
    )


# Idling.


def _window(context: Context) -> tuple[int, int]:
    """How many pings to wait for, and the seconds to count instructions for then."""
    return (SHORT_PINGS, SHORT_SECONDS) if context.short else (SETTLED_PINGS, IDLE_SECONDS)


def _idle(context: Context, program: Path, name: str) -> float:
    """Instructions per second of a program that pings, in the supervisor's place."""
    settled, seconds = _window(context)
    with camera.camera(context) as device:
        profile = Profile(device, name)
        command = install(device, name, program)
        device.instance.remove(camera.SUPERVISOR)
        device.instance.write(camera.SUPERVISOR, profile.script(command), mode=0o755)
        device.power_on()
        for pings in (settled, settled + seconds):
            context.progress(f"{name}, waiting for {pings} pings")
            camera.await_pings(device, pings)
            time.sleep(BETWEEN_TICKS)
            profile.dump()
        profile.instructions()
        return profile.instructions() / seconds


def _idle_ours(context: Context) -> float:
    """The daemon's, measured once for all rows."""
    if context.daemon not in _measured:
        _measured[context.daemon] = _idle(context, context.daemon, "ours")
    return _measured[context.daemon]


def _idle_monit(context: Context) -> float:
    """The same of monit, which watches one process once a second.

    Not in a box: what it costs is to look at every process of the machine, the kernel's included,
    and a box hides most of them.
    """
    settled, seconds = _window(context)
    program = packages.program("monit", "/usr/bin/monit")
    settings = context.scratch / "settings"
    settings.write_text(MONIT.format(folder=context.scratch), encoding="utf-8")
    settings.chmod(0o600)
    report = context.scratch / "monit"
    command = callgrind.wrapped((program, "-I", "-c", settings), report)
    with processes.running(("sleep", "infinity")) as supervised:
        (context.scratch / "supervised").write_text(f"{supervised.pid}\n", encoding="utf-8")
        with processes.running(command) as monit:
            for wait in (settled, seconds):
                context.progress(f"monit, {wait} s")
                time.sleep(wait)
                processes.run(("vgdb", f"--pid={monit.pid}", "dump"))
            part = report.with_suffix(".2")
            servers.wait_until(lambda: callgrind.is_complete(part), "callgrind's report")
    return callgrind.total(part.read_text(encoding="utf-8")) / seconds


def _idle_watchdog(context: Context) -> float:
    """The same of Debian's watchdog daemon, which does so, too."""
    settled, seconds = _window(context)
    with camera.camera(context, ("supervisor",)) as device:
        command = install(device, "watchdog", packages.program("watchdog", "/usr/sbin/watchdog"))
        device.power_on()
        device.instance.write("/tmp/settings", WATCHDOG)
        device.instance.write("/tmp/pictor.pid", f"{camera.process(device, 'pictor')}\n")
        profile = Profile(device, "watchdog")
        profile.start(command, "-F", "-q", "-c", "/tmp/settings")
        for wait in (settled, seconds):
            context.progress(f"watchdog, {wait} s")
            time.sleep(wait)
            profile.dump()
        profile.instructions()
        return profile.instructions() / seconds


def _idle_against_qt(context: Context) -> Result:
    ours = _idle_ours(context)
    bare = _idle(context, context.program("bare-qt-idle"), "bare-qt")
    return Result(ours, bare, ours / bare)


def _idle_against_monit(context: Context) -> Result:
    ours = _idle_ours(context)
    monit = _idle_monit(context)
    count = sum(path.name.isdigit() for path in Path("/proc").iterdir())
    return Result(ours, monit, ours / monit, f"monit looks at {count} processes")


def _idle_of_watchdog(context: Context) -> Result:
    return Result(_idle_watchdog(context))


# Starting.


def _start(context: Context, program: Path, owned: str) -> int:
    """Instructions from exec until the bus name is owned."""
    with camera.camera(context, ("supervisor",)) as device:
        command = install(device, "starts", program)
        device.power_on()
        profile = Profile(device, "start", (f"'--dump-after={owned}'",))
        profile.start(command)
        return profile.instructions()


def _start_against_qt(context: Context) -> Result:
    ours = _start(context, context.daemon, OUR_NAME_OWNED)
    bare = _start(context, context.program("bare-qt-bus-name"), QT_NAME_OWNED)
    least = _start(context, context.program("bare-sd-bus-name"), SD_NAME_OWNED)
    return Result(ours, bare, ours / bare, f"a bare sd-bus program: {least / bare:.2f}x")


def _start_locked(context: Context) -> Result:
    with camera.camera(context, ("supervisor",)) as device:
        driver = install(device, "driver", context.program("start-time"))
        ours = install(device, "ours", context.daemon)
        default = install(device, "default", context.program("default-thread-memory"))
        device.power_on()
        passed: dict[str, list[float]] = {ours: [], default: []}

        def worked(program: str) -> float:
            lines = [run(device, driver, program).split() for _ in range(STARTS_PER_ROUND)]
            passed[program].append(min(float(line[0]) for line in lines))
            return min(float(line[1]) for line in lines)

        run(device, "sync")
        comparison = timing.compare(context, lambda: worked(ours), lambda: worked(default))
        elapsed = statistics.median(passed[ours]) / statistics.median(passed[default])
        return comparison.result(f"elapsed time, with what it waits for: {elapsed:.2f}x")


ROWS: list[Row] = [
    Row("private memory", "KiB", ours_at_most(PRIVATE_LIMIT_KIB), _private_memory),
    Row(
        "locked memory against resident memory",
        "KiB",
        Goal(f"<= {LOCKED_RATIO}x, <= {LOCKED_LIMIT_KIB}", _is_locked_well),
        _locked_memory,
    ),
    Row("idling against bare Qt pings", "instr/s", ratio_at_most(1.10), _idle_against_qt),
    Row("idling against monit", "instr/s", ratio_at_most(1 / MONIT_FACTOR), _idle_against_monit),
    Row("for information: watchdog daemon idling", "instr/s", None, _idle_of_watchdog),
    Row("start until the bus name is owned", "instr", ratio_at_most(1.00), _start_against_qt),
    Row(
        "start with locked memory against default stacks", "ms", ratio_at_most(0.70), _start_locked
    ),
]
