"""Developer mode: which files switch it on, and what the supervisor then leaves alone."""

import os

import pytest
from camera import DEVELOPS, PICTOR, SUPERVISES

ETC = "/etc/mirrorfin_develop"
SYSDATA = "/etc/sysdata/mirrorfin_develop"
DISABLED = f"Service {PICTOR} considered dead, restarting .... (disabled)"


def first_text(camera):
    """What the supervisor says first, once it is on the bus."""
    camera.await_bus_name()
    return camera.await_true(camera.texts, "a record")[0]


@pytest.mark.parametrize(
    "markers", [(ETC,), (SYSDATA,), (ETC, SYSDATA)], ids=["etc", "sysdata", "both"]
)
def test_each_marker_and_both_switch_it_on(put_on_desk, markers):
    camera = put_on_desk()
    for marker in markers:
        camera.developer(True, marker)
    camera.power_on()
    assert first_text(camera) == DEVELOPS
    assert SUPERVISES not in camera.texts()


@pytest.mark.parametrize("marker", [ETC, SYSDATA])
@pytest.mark.parametrize("content", ["", "off\n", "\0\xff" * 5000], ids=["empty", "text", "bytes"])
def test_contents_of_the_marker_do_not_matter(put_on_desk, marker, content):
    camera = put_on_desk()
    camera.instance.write(marker, content)
    camera.power_on()
    assert first_text(camera) == DEVELOPS


@pytest.mark.parametrize("marker", [ETC, SYSDATA])
def test_folder_is_a_marker_too(put_on_desk, marker):
    camera = put_on_desk()
    camera.instance.path(marker).mkdir()
    camera.power_on()
    assert first_text(camera) == DEVELOPS


@pytest.mark.parametrize("marker", [ETC, SYSDATA])
@pytest.mark.skipif(os.getuid() != 0, reason="only for the real root no file is closed")
def test_marker_that_nobody_may_read_is_one_for_root(put_on_desk, marker):
    camera = put_on_desk()
    camera.instance.write(marker, "", mode=0)
    camera.power_on()
    assert first_text(camera) == DEVELOPS


def test_without_a_marker_it_is_off(boot):
    camera = boot()
    assert first_text(camera) == SUPERVISES
    assert DEVELOPS not in camera.texts()


@pytest.mark.parametrize("marker", [ETC, SYSDATA])
def test_link_that_leads_nowhere_is_no_marker(put_on_desk, marker):
    camera = put_on_desk()
    camera.instance.path(marker).symlink_to("/etc/nowhere")
    camera.power_on()
    assert first_text(camera) == SUPERVISES


@pytest.mark.parametrize("change", ["removed", "added"])
def test_marker_counts_at_the_start_only(boot, change):
    camera = boot(developer=change == "removed", watchdog_ms=1_000_000)
    camera.await_bus_name()
    camera.developer(change == "added")
    camera.order("pictor", "down")
    camera.await_text(f"SuprDown::entry ({PICTOR})")
    assert (DEVELOPS in camera.texts()) == (change == "removed")
    assert ("open" in camera.watchdog()) == (change == "added")


def test_watchdog_scheduling_memory_and_panic_setting_are_left_alone(boot):
    camera = boot(developer=True, watchdog_ms=2000)
    camera.await_stable()
    process = str(camera.process())
    status, threads = camera.run("ps", "-L", "-p", process, "-o", "cls=,rtprio=")
    assert (status, {tuple(line.split()) for line in threads.splitlines()}) == (0, {("TS", "-")})
    assert "VmLck:\t       0 kB" in camera.run("cat", f"/proc/{process}/status")[1]
    assert camera.instance.read("/proc/sys/kernel/panic") == "0\n"
    assert camera.lines("watchdog") == []
    assert len(camera.boots()) == 1


def test_dead_service_is_left_alone_and_told_once(put_on_desk):
    camera = put_on_desk(developer=True)
    camera.order("pictor", "down")
    camera.power_on()
    camera.await_text(DISABLED)
    pings = len(camera.pings("pictor"))
    # Three more bad pings lead to the same verdict at least once more.
    camera.await_true(lambda: len(camera.pings("pictor")) >= pings + 4, "more pings")
    assert camera.texts().count(DISABLED) == 1
    assert camera.path(PICTOR) == ["SuprStarting", "SuprDown"]
    assert camera.calls() == []
