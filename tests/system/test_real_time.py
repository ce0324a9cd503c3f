"""The real-time set-up: done where the kernel lets the supervisor, told and survived where not."""

import re

import pytest
from camera import WARDEX, is_refusal

PANIC_SETTING = "/proc/sys/kernel/panic"
NO_SCHEDULING = "sched_setscheduler() failed: (Operation not permitted)"
NO_LOCKING = "mlockall() failed: (Operation not permitted)"
TOO_MUCH_TO_LOCK = "mlockall() failed: (Cannot allocate memory)"
GUARDED = ("---p", "rw-p")
LOGGER_STACK = 560 * 1024
THREAD_STACK = 256 * 1024
DEFAULT_STACK_KB = 8192
# Starts the daemon, under its own name, with fewer rights than the boot program has.
WITH_LESS = """#!/bin/sh
exec setpriv --bounding-set={} prlimit --rtprio=0 --memlock={} /opt/orvo/sbin/wardex
"""


@pytest.fixture
def privileged(put_on_desk):
    """Makes cameras whose supervisor has all rights; skips where nobody can have them."""

    def make(**plan):
        camera = put_on_desk(**plan)
        for shortcoming in camera.shortcomings():
            pytest.skip(shortcoming)
        return camera

    return make


@pytest.fixture
def limited(privileged):
    """Makes and boots cameras whose supervisor lacks some rights."""

    def make(taken, lockable_bytes, panic_mode=0o644):
        camera = privileged()
        camera.instance.path(PANIC_SETTING).chmod(panic_mode)
        camera.instance.remove(WARDEX)
        camera.instance.path("/opt/orvo/sbin").mkdir()
        camera.instance.path("/opt/orvo/sbin/wardex").symlink_to("/desk/wardex")
        camera.instance.write(WARDEX, WITH_LESS.format(taken, lockable_bytes), mode=0o755)
        camera.power_on()
        camera.await_stable()
        return camera

    return make


def threads(camera):
    """Policy, priority and name of each thread of the supervisor, the main thread first."""
    output = camera.run("ps", "-L", "-p", str(camera.process()), "-o", "cls=,rtprio=,comm=")[1]
    return [tuple(line.split()) for line in output.splitlines()]


def status_kb(camera, field):
    """A size of the supervisor's memory, as the kernel tells it."""
    status = camera.run("cat", f"/proc/{camera.process()}/status")[1]
    return int(re.search(rf"^{field}:\s*(\d+) kB$", status, re.MULTILINE)[1])


def locked_kb(camera):
    """How much of its memory the supervisor has locked."""
    return status_kb(camera, "VmLck")


def resident_kb(camera):
    """How much memory it has in all."""
    return status_kb(camera, "VmRSS")


def stack_bytes(camera):
    """The sizes of the thread stacks that the C library made: those with a guard page below."""
    lines = camera.run("cat", f"/proc/{camera.process()}/maps")[1].splitlines()
    areas = [re.match(r"([0-9a-f]+)-([0-9a-f]+) (\S+) \S+ \S+ 0 *$", line) for line in lines]
    sizes = []
    for guard, stack in zip(areas, areas[1:]):
        if guard and stack and guard[2] == stack[1] and (guard[3], stack[3]) == GUARDED:
            sizes.append(int(stack[2], 16) - int(stack[1], 16))
    return sizes


def private_dirty_kb(camera):
    """How much of the memory is the supervisor's alone and differs from every file."""
    rollup = camera.run("cat", f"/proc/{camera.process()}/smaps_rollup")[1]
    return int(re.search(r"^Private_Dirty:\s*(\d+) kB$", rollup, re.MULTILINE)[1])


def refusals(camera):
    """The warnings about it."""
    return [text for text in camera.texts("WARN") if is_refusal(text)]


def test_only_the_main_thread_becomes_a_real_time_one(privileged):
    camera = privileged()
    camera.power_on()
    camera.await_stable()
    main, *others = threads(camera)
    assert main == ("FF", "1", "wardex")
    # The thread that listens for log configuration, and Qt's own for the bus.
    assert sorted(others) == [("TS", "-", "QDBusConnection"), ("TS", "-", "wardex")]


def test_memory_is_locked_and_nothing_refused(privileged):
    camera = privileged()
    camera.power_on()
    camera.await_stable()
    assert locked_kb(camera) > 1000
    assert refusals(camera) == []


def test_thread_stacks_are_small_but_large_enough(privileged):
    camera = privileged()
    camera.power_on()
    camera.await_stable()
    # Qt's own for the bus, and that of the thread which listens for log configuration.
    small, large = sorted(stack_bytes(camera))
    assert THREAD_STACK <= small < LOGGER_STACK <= large < 2 * LOGGER_STACK


def test_locked_memory_is_what_is_used(privileged):
    camera = privileged()
    camera.power_on()
    camera.await_stable()
    # Neither stacks nor regions to allocate from that nobody will ever use.
    assert locked_kb(camera) <= 1.01 * resident_kb(camera)
    assert private_dirty_kb(camera) < DEFAULT_STACK_KB


def test_device_is_told_to_reboot_a_minute_after_a_panic(boot):
    camera = boot()
    camera.await_bus_name()
    assert camera.instance.read(PANIC_SETTING) == "60\n"


def test_panic_setting_that_cannot_be_written_is_nobodys_concern(limited):
    camera = limited("-dac_override", 65536, panic_mode=0o444)
    assert camera.instance.read(PANIC_SETTING) == "0\n"
    assert refusals(camera) == []
    assert camera.records("ERROR", "FATAL", "EMERG") == []


@pytest.mark.parametrize(
    "taken, lockable_bytes, policy, warnings",
    [
        ("-sys_nice", 65536, "TS", [NO_SCHEDULING]),
        ("-ipc_lock", 0, "FF", [NO_LOCKING]),
        ("-ipc_lock", 65536, "FF", [TOO_MUCH_TO_LOCK]),
        ("-sys_nice,-ipc_lock", 0, "TS", [NO_SCHEDULING, NO_LOCKING]),
    ],
)
def test_each_refusal_is_told_and_the_rest_done(limited, taken, lockable_bytes, policy, warnings):
    camera = limited(taken, lockable_bytes)
    assert refusals(camera) == warnings
    assert threads(camera)[0][0] == policy
    assert (locked_kb(camera) > 0) == (warnings == [NO_SCHEDULING])
    assert camera.instance.read(PANIC_SETTING) == "60\n"
    camera.await_feeds(1)
