"""The init scripts with a stand-in for the supervisor, on devices that are not Debian.

The packages' script has no LSB functions of Debian's there (the Yocto recipe installs it), Buildroot's
has nothing but busybox. With the real supervisor tests/packages tries the first.
"""

import shutil
import subprocess
from pathlib import Path

import pytest

REPOSITORY = Path(__file__).resolve().parents[3]
SCRIPTS = {
    "packaged": REPOSITORY / "packaging/init.d/wardex",
    "buildroot": REPOSITORY / "packaging/buildroot/package/wardex/S90wardex",
}
STAND_IN = """
#include <stdio.h>
#include <unistd.h>
int main() { puts("up"); fflush(stdout); for (;;) pause(); }
"""
BOX = ["--unshare-pid", "--unshare-net", "--unshare-ipc", "--new-session", "--die-with-parent"]
BOX += ["--ro-bind", "/usr", "/usr", "--proc", "/proc", "--dev", "/dev", "--chdir", "/"]
for part in ("bin", "sbin", "lib", "lib64"):
    BOX += ["--symlink", f"usr/{part}", f"/{part}"]
for part in ("etc", "run", "tmp"):
    BOX += ["--tmpfs", f"/{part}"]
# `processes`: how many supervisors live.
WORDS = """
script() { $SH /etc/init.d/wardex "$@"; }
pid() { cat /run/wardex.pid; }
processes() {
    found=0
    for each in /proc/[0-9]*; do
        case $(readlink "$each/exe") in /usr/sbin/wardex*) found=$((found + 1)) ;; esac
    done
    echo $found
}
"""


class Device:
    """A box with an init script in it; each call of `does` is a life of its own."""

    def __init__(self, folder: Path, name: str) -> None:
        self.name = name
        self.programs = folder / "sbin"
        applets = folder / "applets"
        for each in (self.programs, applets):
            each.mkdir()
        listed = subprocess.run(["busybox", "--list"], capture_output=True, text=True, check=True)
        for applet in listed.stdout.split():
            (applets / applet).symlink_to("/usr/bin/busybox")
        if name == "packaged":
            shutil.copy("/usr/sbin/start-stop-daemon", self.programs)
        path = {"packaged": "/usr/bin:/usr/sbin", "buildroot": "/applets"}[name]
        self.box = [*BOX, "--bind", str(self.programs), "/usr/sbin", "--tmpfs", "/usr/lib/lsb"]
        self.box += ["--ro-bind", str(SCRIPTS[name]), "/etc/init.d/wardex", "--dir", "/etc/default"]
        self.box += ["--ro-bind", str(applets), "/applets", "--clearenv", "--setenv", "PATH", path]
        shell = {"packaged": "dash", "buildroot": "/usr/bin/busybox sh"}[name]
        self.box += ["--setenv", "SH", shell]

    def does(self, commands: str) -> list[str]:
        """The lines that commands print; what the script itself prints is theirs to show."""
        done = subprocess.run(
            ["bwrap", *self.box, "--", "/usr/bin/busybox", "sh", "-uc", WORDS + commands],
            capture_output=True,
            text=True,
            timeout=50,
        )
        assert done.stderr == ""
        return done.stdout.splitlines()


@pytest.fixture(scope="module", name="stand_in")
def _stand_in(tmp_path_factory) -> Path:
    program = tmp_path_factory.mktemp("program") / "wardex"
    subprocess.run(["cc", "-x", "c", "-o", program, "-"], input=STAND_IN, text=True, check=True)
    return program


@pytest.fixture(params=SCRIPTS, name="device")
def _device(request, tmp_path, stand_in) -> Device:
    tried = subprocess.run(["bwrap", *BOX, "--", "true"], capture_output=True, text=True)
    if tried.returncode != 0:
        pytest.skip(f"this machine offers no namespaces: {tried.stderr.strip()}")
    device = Device(tmp_path, request.param)
    shutil.copy(stand_in, device.programs)
    return device


def test_start_says_so_and_leaves_one_supervisor(device):
    said = device.does("script start; echo $?; processes; readlink /proc/$(pid)/exe")
    words = {
        "packaged": "Starting service supervisor: wardex.",
        "buildroot": "Starting wardex: OK",
    }
    assert said == [words[device.name], "0", "1", "/usr/sbin/wardex"]


def test_second_start_changes_nothing(device):
    assert (
        device.does(
            """
        script start >/dev/null; first=$(pid)
        script start >/dev/null; echo $?
        processes; [ "$(pid)" = "$first" ] && echo same
    """
        )
        == ["0", "1", "same"]
    )


def test_start_is_not_misled_by_a_number_that_another_program_has_now(device):
    # The shell is the program by which Buildroot's script starts the supervisor.
    assert (
        device.does(
            """
        /bin/sh -c 'sleep 1000; :' &
        echo $! >/run/wardex.pid
        script start >/dev/null; echo $?; processes; [ "$(pid)" != $! ] && echo another
    """
        )
        == ["0", "1", "another"]
    )


def test_stop_ends_the_supervisor(device):
    assert (
        device.does(
            """
        script start >/dev/null; script stop >/dev/null; echo $?
        processes; [ -e /run/wardex.pid ] || echo gone
    """
        )
        == ["0", "0", "gone"]
    )


def test_stop_leaves_another_program_with_the_old_number_alone(device):
    assert (
        device.does(
            """
        sleep 1000 & echo $! >/run/wardex.pid
        script stop >/dev/null; echo $?; kill -0 $! && echo alive
    """
        )
        == ["0", "alive"]
    )


def test_stopping_what_does_not_run_is_no_failure(device):
    assert device.does("script stop >/dev/null; echo $?") == ["0"]


def test_restart_gives_another_supervisor(device):
    assert (
        device.does(
            """
        script start >/dev/null; first=$(pid)
        script restart >/dev/null; echo $?
        processes; [ "$(pid)" != "$first" ] && echo another
    """
        )
        == ["0", "1", "another"]
    )


def test_restart_ends_a_supervisor_whose_file_was_replaced(device):
    assert (
        device.does(
            """
        script start >/dev/null; first=$(pid)
        cp /usr/sbin/wardex /usr/sbin/new; mv /usr/sbin/new /usr/sbin/wardex
        script restart >/dev/null; echo $?
        processes; readlink /proc/$(pid)/exe; [ -e /proc/$first ] || echo ended
    """
        )
        == ["0", "1", "/usr/sbin/wardex", "ended"]
    )


def test_settings_are_taken_from_their_file(device):
    assert (
        device.does(
            """
        printf 'OUTPUT=/run/said\\nCORE_LIMIT=0\\n' >/etc/default/wardex
        script start >/dev/null
        tries=0; until [ -s /run/said ] || [ $tries -gt 200 ]; do tries=$((tries + 1)); sleep 0.05; done
        cat /run/said; grep -c 'Max core file size  *0 ' /proc/$(pid)/limits
    """
        )
        == ["up", "1"]
    )


def test_without_the_program_nothing_is_done_and_nothing_said(device):
    (device.programs / "wardex").unlink()
    assert device.does("script start; echo $?; ls /run") == ["0"]


def test_other_words_are_refused(device):
    status = {"packaged": "3", "buildroot": "1"}[device.name]
    assert device.does("script dance 2>/dev/null; echo $?") == [status]


@pytest.mark.parametrize("device", ["packaged"], indirect=True)
def test_status_tells_whether_the_supervisor_runs(device):
    assert (
        device.does(
            """
        script status; echo $?
        script start >/dev/null; script status; echo $?
        script stop >/dev/null; script status; echo $?
    """
        )
        == ["wardex is not running", "3", "wardex is running", "0", "wardex is not running", "3"]
    )


@pytest.mark.parametrize("device", ["packaged"], indirect=True)
def test_failed_start_is_told(device):
    (device.programs / "start-stop-daemon").write_text("#!/bin/sh\nexit 2\n")
    assert device.does("script start; echo $?") == [
        "Starting service supervisor: wardex failed!",
        "2",
    ]


def test_supervisor_that_cannot_be_started_is_told(device):
    (device.programs / "wardex").write_text("#!/no/such/interpreter\n")
    assert device.does("script start | grep -ciE 'fail'; script start >/dev/null; echo $?") == [
        "1",
        "1",
    ]


@pytest.mark.parametrize("device", ["buildroot"], indirect=True)
def test_supervisor_that_hears_no_request_to_end_is_killed(device):
    assert (
        device.does(
            """
        echo STOP_PATIENCE=2 >/etc/default/wardex
        trap '' TERM; script start >/dev/null
        script stop; echo $?; processes
    """
        )
        == ["Stopping wardex: OK", "0", "0"]
    )
