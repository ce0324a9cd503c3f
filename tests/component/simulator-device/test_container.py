"""A device where the kernel refuses namespaces: in a container, imitated with few rights."""

import os
import subprocess
import sys
from pathlib import Path

import pytest

from wardex_desk.places import REPOSITORY

RIGHTS = ("CAP_CHOWN", "CAP_DAC_OVERRIDE", "CAP_FOWNER", "CAP_KILL")
PARTS = ("bin", "sbin", "lib", "lib64")
ETC = ("passwd", "alternatives", "ld.so.cache", "machine-id")
# What each claim's program begins with.
PROLOGUE = """
import os, signal, subprocess, sys
from pathlib import Path
from wardex_desk.box import Programs, BoxError
from wardex_desk.device import Device
from wardex_desk.firmware import Plan
from wardex_desk.fixed_paths import LINKS, SOCKETS
from wardex_desk.instance import Instance
from wardex_desk.waiting import poll
PLACES = (*LINKS, *SOCKETS, "/dev/watchdog")
def left():
    return [path for path in PLACES if os.path.lexists(path)]
def make(**plan):
    programs = Programs(Path(os.environ["WARDEX_BIN"]), Path("/home/supervisor"))
    return Device(Instance("camera", Path("/home/desk")), Plan(**plan), programs)
"""


def imitation(home, panic_is_open):
    """A container: no namespaces to be had inside, few rights, files of its own."""
    options = ["--unshare-user", "--uid", "0", "--gid", "0", "--unshare-pid", "--unshare-net"]
    options += ["--unshare-ipc", "--disable-userns", "--die-with-parent", "--cap-drop", "ALL"]
    for right in RIGHTS:
        options += ["--cap-add", right]
    options += ["--ro-bind", "/usr", "/usr"]
    for part in PARTS:
        options += ["--symlink", f"usr/{part}", f"/{part}"]
    options += ["--proc", "/proc", "--dev", "/dev", "--ro-bind", "/sys", "/sys"]
    for name in ETC:
        options += ["--ro-bind-try", f"/etc/{name}", f"/etc/{name}"]
    options += ["--tmpfs", "/tmp", "--dir", "/run", "--symlink", "/run", "/var/run"]
    options += ["--ro-bind", str(REPOSITORY), str(REPOSITORY)]
    options += ["--ro-bind", os.environ["WARDEX_BIN"], os.environ["WARDEX_BIN"]]
    options += ["--bind", str(home), "/home", "--chdir", "/home"]
    if panic_is_open:
        options += ["--bind", str(home / "panic"), "/proc/sys/kernel/panic"]
    else:
        options += ["--ro-bind", "/proc/sys", "/proc/sys"]
    return ["bwrap", *options, "--"]


@pytest.fixture
def inside(home, programs):
    """Runs a program in the container and answers what it prints."""
    (home / "panic").write_text("0\n")

    def run(program, panic_is_open=False):
        command = imitation(home, panic_is_open)
        attempt = subprocess.run([*command, "true"], capture_output=True, text=True)
        if attempt.returncode != 0:
            pytest.skip(f"no container can be imitated here: {attempt.stderr}")
        outcome = subprocess.run(
            [*command, sys.executable, "-c", PROLOGUE + program],
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=50,
        )
        return outcome.stdout.splitlines()

    return run


def test_container_itself_becomes_the_box_and_says_what_it_cannot_show(inside):
    said = inside("print(*make().shortcomings(), sep='\\n')")
    assert said[0] == (
        "no namespaces here: this container itself is the box, for one device at a time"
    )
    assert len(said) == 4


def test_services_answer_and_obey_in_a_container(inside):
    program = """
with make() as device:
    device.power_on()
    words = ["--system", "--print-reply=literal", "--dest=com.orvo.pictor", "/"]
    device.order("pictor", "starting")
    print(device.run("dbus-send", *words, "com.orvo.pictor.doPing")[1].split()[-1])
    print(device.connect_redis().command("PING"))
    print(sorted(set(device.run("ps", "-e", "-o", "comm=")[1].split()) & {"pictor", "quorl"}))
"""
    assert inside(program) == ["starting", "b'PONG'", "['pictor', 'quorl']"]


def test_reboot_and_watchdog_boot_again_in_a_container(inside):
    program = """
with make(watchdog_ms=600) as device:
    device.power_on()
    device.reboot()
    device.wait_for(lambda: len(device.boots()) == 2 and device.is_up(), 10, "the reboot")
    opened = lambda: sum(line.endswith(" open") for line in device.lines("watchdog")) == 2
    device.wait_for(opened, 10, "the second supervisor at work")
    device.supervisor("kill")
    device.wait_for(lambda: len(device.boots()) == 3 and device.is_up(), 10, "the reset")
    print([boot.reason for boot in device.boots()])
"""
    assert inside(program) == ["['power-on', 'reboot', 'watchdog']"]


def test_supervisor_finds_the_eeproms_in_a_container(inside):
    program = """
with make() as device:
    device.power_on()
    mock = [f"{name}={value}" for name, value in device._box.supervisor_environment().items()]
    place = "/sys/bus/i2c/devices/2-0054/eeprom"
    print(device.run("env", *mock, "head", "-c", "9", place))
"""
    assert inside(program) == ["(0, '#!02 F340')"]


def test_nothing_is_left_in_the_container(inside):
    program = """
with make() as device:
    device.power_on()
    print(len(left()) == len(PLACES))
print(left())
print(subprocess.run(["ps", "-e", "-o", "comm="], capture_output=True, text=True).stdout.split())
"""
    assert inside(program) == ["True", "[]", "['bwrap', 'python3', 'ps']"]


def test_nothing_is_left_when_the_driver_is_killed(inside):
    program = """
driver = os.fork()
if driver == 0:
    make().power_on()
    Path("/home/on").touch()
    signal.pause()
poll(Path("/home/on").exists, 10)
print(len(left()) == len(PLACES))
os.kill(driver, signal.SIGKILL)
os.waitpid(driver, 0)
poll(lambda: not left(), 10)
print(left())
"""
    assert inside(program) == ["True", "[]"]


def test_second_device_in_a_container_is_refused_until_the_first_is_off(inside):
    program = """
def second():
    programs = Programs(Path(os.environ["WARDEX_BIN"]), Path("/home/supervisor"))
    return Device(Instance("second", Path("/home/desk")), Plan(), programs)
with make() as device:
    device.power_on()
    try:
        second()
    except BoxError as error:
        print(error)
    print(device.run("readlink", "/log")[1].strip())
with second() as device:
    device.power_on()
    print(device.run("readlink", "/log")[1].strip())
"""
    said = inside(program)
    assert said[-3].endswith("another device is in this container, which has room for one")
    assert said[-2:] == ["/home/desk/camera/log", "/home/desk/second/log"]


def test_path_of_somebody_else_refuses_the_device(inside):
    program = """
Path("/tmp/redis.sock").write_text("mine")
try:
    make()
except BoxError as error:
    print(error)
print(left(), Path("/tmp/redis.sock").read_text())
"""
    said = inside(program)
    assert said[-2].endswith(
        "/tmp/redis.sock belongs to somebody else (remove it if nobody needs it)"
    )
    assert said[-1] == "['/tmp/redis.sock'] mine"


def test_container_that_can_write_the_panic_setting_is_refused(inside, home):
    program = """
try:
    make()
except BoxError as error:
    print(error)
"""
    said = inside(program, panic_is_open=True)
    assert said[-1].endswith(
        "/proc/sys/kernel/panic can be written here and belongs to the whole machine"
    )
    assert (home / "panic").read_text() == "0\n"


def test_machine_itself_is_never_a_box():
    if os.readlink("/proc/self/ns/pid") != "pid:[4026531836]":
        pytest.skip("this is a container")
    words = [sys.executable, "-c", PROLOGUE + CONTAINER_BOX]
    outcome = subprocess.run(words, capture_output=True, text=True)
    assert outcome.stdout == "this is no container but the machine itself\n"
    assert not Path("/log").is_symlink()


CONTAINER_BOX = """
import tempfile
from wardex_desk.container_box import ContainerBox
with tempfile.TemporaryDirectory() as folder:
    supervisor = Path(folder) / "supervisor"
    supervisor.touch()
    programs = Programs(Path(os.environ["WARDEX_BIN"]), supervisor)
    try:
        ContainerBox(Instance("camera", Path(folder)), programs)
    except BoxError as error:
        print(error)
"""
