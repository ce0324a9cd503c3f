"""A whole run below valgrind: no invalid access, no unset value, no leak, no stray descriptor."""

import os
import re
import shutil
from pathlib import Path

import pytest
from camera import WARDEX
from whole_run import live

SUPPRESSIONS = Path(__file__).parent / "valgrind.supp"
# Starts the daemon, under its own name, below valgrind.
BELOW_VALGRIND = """#!/bin/sh
{environment} exec valgrind --tool=memcheck --leak-check=full --show-leak-kinds=definite,indirect \\
    --errors-for-leak-kinds=definite,indirect --track-fds=yes --gen-suppressions=all --verbose \\
    --suppressions=/etc/valgrind.supp --log-file=/log/memcheck.%p /opt/orvo/sbin/wardex
"""
# How valgrind's process is listed.
NAME = "memcheck-amd64-"
BOUND = 120.0


@pytest.fixture
def checked(put_on_desk):
    """Makes and boots cameras with the supervisor below valgrind."""
    if shutil.which("valgrind") is None:
        pytest.skip("valgrind is not installed")

    def make(environment=""):
        # A second of the supervisor's may take many here.
        camera = put_on_desk(watchdog_ms=60_000)
        camera.bound = BOUND
        camera.instance.remove(WARDEX)
        camera.instance.path("/opt/orvo/sbin").mkdir()
        camera.instance.path("/opt/orvo/sbin/wardex").symlink_to("/desk/wardex")
        camera.instance.write("/etc/valgrind.supp", SUPPRESSIONS.read_text(encoding="utf-8"))
        camera.instance.write(WARDEX, BELOW_VALGRIND.format(environment=environment), mode=0o755)
        camera.power_on()
        return camera

    return make


def end(camera):
    """Ends the supervisor by SIGTERM; its exit status and valgrind's report."""
    process = camera.run("ps", "-C", NAME, "-o", "pid=")[1].strip()
    camera.run("kill", "-TERM", process)
    status = camera.await_end()
    return status, camera.instance.read(f"/log/memcheck.{process}")


def names_of_used_suppressions(report):
    """The entries of SUPPRESSIONS that this run needed."""
    found = re.findall(r"used_suppression: +\d+ (\S+) /etc/valgrind.supp", report)
    return sorted(set(found))


def names_of_suppressions():
    """All entries of SUPPRESSIONS."""
    return sorted(re.findall(r"\{\n\s+(\S+)", SUPPRESSIONS.read_text(encoding="utf-8")))


def judge(report):
    """Nothing was found, and every suppression was needed."""
    assert "ERROR SUMMARY: 0 errors" in report, report[report.find("HEAP SUMMARY") :][:20000]
    assert names_of_used_suppressions(report) == names_of_suppressions()


def test_supervisor_that_is_killed_has_done_nothing_wrong(checked):
    camera = checked()
    live(camera)
    status, report = end(camera)
    assert status == 128 + 15
    judge(report)


def test_supervisor_that_is_torn_down_leaves_nothing(checked):
    assert (Path(os.environ["WARDEX_BIN"]) / "libquit_on_sigterm.so").exists()
    camera = checked("LD_PRELOAD=/desk/bin/libquit_on_sigterm.so")
    live(camera)
    status, report = end(camera)
    assert status == 0
    judge(report)
    # Besides the standard ones: valgrind's own for the report, and that of the event loop's default
    # context, which Qt shares with the process and never ends.
    assert "FILE DESCRIPTORS: 5 open (3 std) at exit." in report
