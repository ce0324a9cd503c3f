"""The command ./run as a person uses it, from another process."""

import json
import os
import pty
import signal
import subprocess
import sys
from pathlib import Path

import pytest
from machine import processes_in

from wardex_desk.control import boot_program
from wardex_desk.instance import Instance
from wardex_desk.shell import entering
from wardex_desk.waiting import poll

NOBODY = 65534
# A driver that keeps a device on until somebody ends it.
DRIVER = """
import sys, threading
from pathlib import Path
from wardex_desk.box import Programs
from wardex_desk.device import Device
from wardex_desk.firmware import Plan
from wardex_desk.instance import Instance
home, peers, supervisor = map(Path, sys.argv[1:])
with Device(Instance("camera", home), Plan(), Programs(peers, supervisor)) as device:
    device.power_on()
    print(*device.shortcomings(), "on", flush=True)
    threading.Event().wait()
"""


def command(home, *words, text=None):
    """Runs ./run's program: its exit status and all it says."""
    outcome = subprocess.run(
        [sys.executable, "-m", "wardex_desk", "--home", str(home), *words],
        input=text,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        timeout=30,
    )
    return outcome.returncode, outcome.stdout


def namespace_of(home):
    """The pid namespace of the running device."""
    process = boot_program(Instance("camera", home))
    return os.readlink(f"/proc/{process}/ns/pid")


@pytest.fixture
def driver(home, programs, put_on_desk):
    """Starts drivers in processes of their own."""
    put_on_desk("probe")
    started = []

    def start(**options):
        words = [sys.executable, "-c", DRIVER, str(home), str(programs.peers)]
        process = subprocess.Popen(
            [*words, str(programs.supervisor)],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            **options,
        )
        started.append(process)
        return process, process.stdout.readline().strip()

    yield start
    for process in started:
        process.kill()
        process.wait()


def as_nobody(*words):
    """The words of a command that runs as an ordinary user."""
    return ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", *words]


def test_second_terminal_reaches_the_device(camera, home):
    assert command(home, "do", "pictor", "hang") == (
        0,
        "pictor answers 'hang' from now on\n",
    )
    assert camera.instance.read("/run/orders/pictor") == "hang\n"
    assert command(home, "do", "redis", "stop")[0] == 0
    assert "redis-server" not in camera.run("ps", "-e")[1]


def test_deed_that_the_device_refuses_ends_with_status_one(camera, home):
    command(home, "do", "bus", "stop")
    assert command(home, "do", "bus", "hang") == (1, "run: dbus-daemon is not running\n")


def test_shell_runs_on_the_device_and_answers_its_status(camera, home):
    status, output = command(home, "sh", "hostname; ls /opt/orvo/bin; exit 3")
    assert (status, output.split()) == (
        3,
        ["camera", "corvane", "pictor", "quorl", "wardex", "wardexctl", "wirl"],
    )
    assert command(home, "sh", text="ps -e | grep -c pictor\n") == (0, "1\n")


def test_operators_command_runs_on_the_device_and_answers_its_status(camera, home):
    status, output = command(home, "ctl", "doctor", "--json")
    assert (status, output[:1]) == (5, "{")
    assert command(home, "ctl", "log", "-g", "no such message", "--source", "$HOME;") == (0, "")
    assert command(home, "ctl", "frob")[0] == 64


def test_interrupted_program_on_the_device_answers_as_in_a_shell(camera, home):
    shell = subprocess.Popen(
        [sys.executable, "-m", "wardex_desk", "--home", str(home), "sh", "echo on; exec sleep 60"],
        stdout=subprocess.PIPE,
        start_new_session=True,
    )
    with shell:
        assert shell.stdout.readline() == b"on\n"
        os.killpg(shell.pid, signal.SIGINT)
        assert shell.wait(20) == 128 + signal.SIGINT


def test_operators_command_reads_the_eeproms_of_the_device(camera, home):
    findings = json.loads(command(home, "ctl", "doctor", "--json")[1])["findings"]
    told = {finding["object"]: finding["text"] for finding in findings}
    assert told["EEPROM F (2-0054)"] == "type code 340, checksum right"
    assert told["device family"] == "ZK4XX"


def test_wish_for_no_colour_reaches_the_device(camera, home, monkeypatch):
    monkeypatch.setenv("NO_COLOR", "1")
    monkeypatch.setenv("OTHER", "1")
    assert command(home, "sh", "echo $NO_COLOR$OTHER") == (0, "1\n")


def test_operators_command_needs_a_device(home):
    assert command(home, "ctl", "status") == (
        1,
        "run: no device 'camera' is running (start it with ./run)\n",
    )


def test_shell_sees_the_reboot_of_the_device_only(camera, home):
    assert command(home, "sh", "command -v reboot") == (
        0,
        "/desk/simulator/device/stubs/reboot\n",
    )


def test_person_at_a_terminal_gets_a_terminal_of_the_device(camera, home):
    person, terminal = pty.openpty()
    shell = subprocess.Popen(
        [sys.executable, "-m", "wardex_desk", "--home", str(home), "sh"],
        stdin=terminal,
        stdout=terminal,
        stderr=terminal,
        start_new_session=True,
    )
    os.close(terminal)
    os.write(person, b"tty; hostname; exit 4\n")
    assert shell.wait(20) == 4
    said = os.read(person, 4096).decode().split()
    os.close(person)
    assert "/dev/pts/0" in said and "camera" in said


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_device_ends_with_its_driver_however_that_ends(driver, home, number):
    process, _ = driver()
    namespace = namespace_of(home)
    assert processes_in(namespace)
    process.send_signal(number)
    process.wait()
    assert poll(lambda: not processes_in(namespace), 5)
    assert not Instance("camera", home).is_running()


@pytest.mark.skipif(os.getuid() != 0, reason="only root can become somebody else")
def test_user_without_rights_has_a_device_too(driver, home, programs):
    for needed in (__file__, programs.supervisor):
        if subprocess.run(as_nobody("test", "-r", str(needed)), check=False).returncode != 0:
            pytest.skip(f"an ordinary user may not read {needed}: clone to a folder open to all")
    os.chown(home, NOBODY, NOBODY)
    for folder in (home, *home.rglob("*")):
        os.chown(folder, NOBODY, NOBODY, follow_symlinks=False)
    process, said = driver(user=NOBODY, group=NOBODY, extra_groups=[])
    if "offers no namespaces" in said:
        pytest.skip(said)
    assert said == "not root here: the kernel refuses the supervisor's real-time duties on"
    inside = entering(boot_program(Instance("camera", home)), ["id", "-u"])
    assert subprocess.check_output(inside, text=True) == "0\n"
    desk = (sys.executable, "-m", "wardex_desk", "--home", str(home))
    output = subprocess.check_output(as_nobody(*desk, "sh", "id -u; ps -e"), text=True)
    assert output.startswith("0\n") and "pictor" in output
    assert "60" not in Path("/proc/sys/kernel/panic").read_text()
