"""One simulated device: what stands on it and what survives which end."""

import json
import os
import re

import pytest
from machine import processes_in

from wardex_desk.control import ControlError
from wardex_desk.device import DeviceError
from wardex_desk.eeprom import Record
from wardex_desk.namespace_box import Layout
from wardex_desk.waiting import now, poll

SCRIPT_CALLS = [
    "mf-optware start begin",
    "10_wirl start begin",
    "10_wirl start end 0",
    "20_quorl start begin",
    "20_quorl start end 0",
    "30_pictor start begin",
    "30_pictor start end 0",
    "40_corvane start begin",
    "40_corvane start end 0",
    "mf-optware start end 0",
]


def calls(device):
    """The scripts' journal without its times."""
    return [line.split(" ", 1)[1] for line in device.lines("scripts")]


def listed(device):
    """The process names that `ps` shows to the device's daemons."""
    return device.run("ps", "-e", "-o", "comm=")[1].split()


def reboots(device):
    """Whether the second boot is done."""
    return len(device.boots()) == 2 and device.is_up()


def ping(device, service):
    """What a peer answers on the bus."""
    return device.run(
        *("dbus-send", "--system", "--print-reply", f"--dest={service}", "/", f"{service}.doPing")
    )


def test_is_up_within_two_seconds(put_on_desk):
    device = put_on_desk()
    begin = now()
    device.power_on()
    assert now() - begin < 2.0
    assert [boot.reason for boot in device.boots()] == ["power-on"]


def test_starts_its_services_by_their_scripts(camera):
    assert calls(camera) == SCRIPT_CALLS


def test_lists_its_processes_by_their_names(camera):
    names = listed(camera)
    for name in ("wirl", "quorl", "pictor", "corvane", "dbus-daemon", "watchdog-guard"):
        assert names.count(name) == 1
    assert names.count("redis-server") == 2
    assert names.count("device-observer") == 2


def test_has_the_services_of_its_family_only(put_on_desk):
    device = put_on_desk(family="ZM7xx")
    device.power_on()
    assert "wirl" in listed(device)
    assert not {"quorl", "pictor", "corvane"} & set(listed(device))
    assert device.run("ls", "/opt/orvo/etc/init.d")[1].split() == ["10_wirl"]


def test_has_no_network_and_no_processes_of_the_machine(camera):
    assert camera.run("ls", "/sys/class/net")[0] != 0
    interfaces = camera.run("cat", "/proc/net/dev")[1].splitlines()[2:]
    assert [line.split(":")[0].strip() for line in interfaces] == ["lo"]
    assert len(listed(camera)) < 30


def test_cannot_touch_the_panic_setting_of_the_machine(camera):
    before = open("/proc/sys/kernel/panic").read()
    assert camera.run("sh", "-c", "echo 60 >/proc/sys/kernel/panic") == (0, "")
    assert open("/proc/sys/kernel/panic").read() == before
    assert camera.instance.read("/proc/sys/kernel/panic") == "60\n"


@pytest.mark.skipif(os.getuid() != 0, reason="only root could change the machine's setting")
def test_box_without_its_own_panic_setting_refuses_to_boot(put_on_desk, monkeypatch):
    device = put_on_desk()
    whole = Layout.options

    def uncovered(layout):
        words = whole(layout)
        place = words.index("/proc/sys/kernel/panic") - 2
        return words[:place] + words[place + 3 :]

    monkeypatch.setattr(Layout, "options", uncovered)
    with pytest.raises(DeviceError, match="refusing to boot: /proc/sys/kernel/panic is the host's"):
        device.power_on()
    assert device.lines("watchdog") == []


def test_box_that_cannot_cover_the_panic_setting_does_not_start(put_on_desk):
    device = put_on_desk()
    device.instance.remove("/proc/sys/kernel/panic")
    with pytest.raises(DeviceError, match="Can't find source path .*/proc/sys/kernel/panic"):
        device.power_on()


def test_order_changes_what_the_service_answers(camera):
    camera.wait_for(lambda: ping(camera, "com.orvo.pictor")[0] == 0, 10, "the first answer")
    camera.order("pictor", "starting")
    assert '"starting"' in ping(camera, "com.orvo.pictor")[1]
    camera.order("pictor", "down", "up")
    assert '"down"' in ping(camera, "com.orvo.pictor")[1]
    assert '"up"' in ping(camera, "com.orvo.pictor")[1]
    assert [line.split()[1:] for line in camera.lines("pings")][-3:] == [
        ["pictor", "starting"],
        ["pictor", "down"],
        ["pictor", "up"],
    ]


def test_script_stops_and_starts_its_service(camera):
    before = camera.instance.read("/run/pictor.pid")
    assert camera.run("/opt/orvo/etc/init.d/30_pictor", "stop")[0] == 0
    assert "pictor" not in listed(camera)
    assert camera.run("/opt/orvo/etc/init.d/30_pictor", "restart")[0] == 0
    assert listed(camera).count("pictor") == 1
    assert camera.instance.read("/run/pictor.pid") != before


def test_script_stops_a_service_that_is_frozen(camera):
    camera.signal("pictor", "stop")
    assert camera.run("/opt/orvo/etc/init.d/30_pictor", "stop")[0] == 0
    assert "pictor" not in listed(camera)


def test_script_without_an_action_says_which_there_are(camera):
    status, output = camera.run("/opt/orvo/etc/init.d/30_pictor", "sit")
    assert (status, output) == (2, "Usage: /opt/orvo/etc/init.d/30_pictor start|stop|restart\n")
    assert calls(camera)[-2:] == ["30_pictor sit begin", "30_pictor sit end 2"]


def test_package_script_restarts_all_services_backwards_then_forwards(camera):
    assert camera.run("/etc/init.d/mf-optware", "restart")[0] == 0
    begun = [call for call in calls(camera)[len(SCRIPT_CALLS) :] if call.endswith("begin")]
    stops = ["40_corvane stop", "30_pictor stop", "20_quorl stop", "10_wirl stop"]
    starts = ["10_wirl start", "20_quorl start", "30_pictor start", "40_corvane start"]
    assert begun == [f"{call} begin" for call in ["mf-optware restart", *stops, *starts]]
    for name in ("wirl", "quorl", "pictor", "corvane"):
        assert listed(camera).count(name) == 1


def test_knob_makes_a_script_fail_and_do_nothing(camera):
    camera.knob("30_pictor", "stop", "fail 3")
    assert camera.run("/opt/orvo/etc/init.d/30_pictor", "stop")[0] == 3
    assert "pictor" in listed(camera)
    assert calls(camera)[-1] == "30_pictor stop end 3"
    camera.knob("30_pictor", "stop")
    assert camera.run("/opt/orvo/etc/init.d/30_pictor", "stop")[0] == 0


def test_knob_makes_a_script_slow(camera):
    camera.knob("10_wirl", "restart", "delay 350")
    begin = now()
    camera.run("/opt/orvo/etc/init.d/10_wirl", "restart")
    assert now() - begin >= 0.35
    times = [float(line.split()[0]) for line in camera.lines("scripts")[-2:]]
    assert times[1] - times[0] >= 0.34


def test_reboot_boots_again_with_tmp_empty_and_etc_kept(camera):
    camera.order("pictor", "starting")
    camera.run("touch", "/tmp/core_wirl", "/etc/kept", "/run/gone")
    camera.developer(True)
    camera.reboot()
    camera.wait_for(lambda: reboots(camera), 10, "the second boot")
    assert [boot.reason for boot in camera.boots()] == ["power-on", "reboot"]
    assert "reboot begin" in calls(camera)
    assert camera.run("ls", "/tmp/core_wirl")[0] != 0
    assert camera.run("ls", "/run/gone")[0] != 0
    assert camera.run("ls", "/etc/kept", "/etc/mirrorfin_develop")[0] == 0
    assert camera.instance.read("/run/orders/pictor") == "starting\n"
    assert calls(camera)[-len(SCRIPT_CALLS) :] == SCRIPT_CALLS


def test_settings_survive_a_reboot_and_records_do_not(camera):
    with camera.connect_redis("redis-store") as store, camera.connect_redis() as cache:
        store.command("HSET", "LOG:PERM:CFG", "wardex", "mine")
        cache.command("RPUSH", "LOG:ENTRIES", "old")
    camera.reboot()
    camera.wait_for(lambda: reboots(camera), 10, "the second boot")
    with camera.connect_redis("redis-store") as store, camera.connect_redis() as cache:
        assert store.command("HGET", "LOG:PERM:CFG", "wardex") == b"mine"
        assert store.command("HGET", "LOG:PERM:CFG", "all") == b'{"source":"all","mask":255}'
        assert cache.command("EXISTS", "LOG:ENTRIES") == 0


def test_watchdog_resets_a_device_whose_supervisor_is_silent(put_on_desk):
    device = put_on_desk(watchdog_ms=600)
    device.power_on()
    device.wait_for(lambda: len(device.lines("watchdog")) > 5, 10, "some feeds")
    assert len(device.boots()) == 1
    device.run("rm", "-r", "/tmp/fed")
    device.wait_for(lambda: reboots(device), 10, "the reset")
    assert [boot.reason for boot in device.boots()] == ["power-on", "watchdog"]


@pytest.mark.parametrize("action", ["kill", "stop"])
def test_watchdog_counts_on_without_its_supervisor(put_on_desk, action):
    device = put_on_desk(watchdog_ms=600)
    device.power_on()
    device.wait_for(lambda: len(device.lines("watchdog")) > 2, 10, "a feed")
    device.supervisor(action)
    device.wait_for(lambda: reboots(device), 10, "the reset")
    assert [boot.reason for boot in device.boots()] == ["power-on", "watchdog"]


def test_syslog_is_written_down_with_its_time(camera):
    camera.run("logger", "-p", "daemon.crit", "-t", "wardex", "RESTARTING")
    line = camera.wait_for(lambda: camera.lines("syslog"), 5, "the message")[0]
    assert re.fullmatch(r"\d+\.\d{6} <26>.*wardex: RESTARTING", line)


def test_redis_stops_and_starts(camera):
    camera.redis("stop")
    assert "redis-server" not in listed(camera)
    assert not camera.instance.path("/tmp/redis-cache.sock").exists()
    camera.redis("start")
    assert listed(camera).count("redis-server") == 2
    camera.redis("restart", ["redis-cache"])
    with camera.connect_redis() as cache:
        assert cache.command("PING") == b"PONG"


def test_frozen_redis_answers_again_when_it_may_go_on(camera):
    camera.redis("hang", ["redis-cache"])
    assert "T" in camera.run("ps", "-C", "redis-server", "-o", "state=")[1]
    camera.redis("continue", ["redis-cache"])
    with camera.connect_redis() as cache:
        assert cache.command("PING") == b"PONG"


def test_bus_stops_and_starts(camera):
    camera.bus("stop")
    assert "dbus-daemon" not in listed(camera)
    camera.bus("start")
    assert "dbus-daemon" in listed(camera)


def test_records_that_are_published_are_written_down(camera):
    with camera.connect_redis() as cache:
        cache.command("PUBLISH", "LOG:ENTRIES", "a \x01 record")
    heard = camera.wait_for(lambda: camera.lines("records")[1:], 5, "the record")
    assert json.loads(heard[0])["record"] == "a \x01 record"


def test_eeprom_change_is_seen_at_once(camera):
    camera.write_eeprom(Record("F", "351"))
    place = "/sys/bus/i2c/devices/2-0054/eeprom"
    assert camera.run("head", "-c", "9", place) == (0, "#!02 F351")
    camera.damage_eeprom("F", "gone")
    assert camera.run("head", "-c", "9", place)[0] != 0


def test_parts_can_be_left_out(put_on_desk):
    device = put_on_desk(
        without=frozenset({"bus", "redis-cache", "redis-store", "watchdog", "services"})
    )
    device.power_on()
    assert not {"dbus-daemon", "redis-server", "pictor"} & set(listed(device))
    assert device.run("ls", "/dev/watchdog")[0] != 0


def test_request_that_makes_no_sense_is_refused(camera):
    with pytest.raises(ControlError, match="bello is not running"):
        camera.signal("bello", "kill")
    with pytest.raises(ControlError, match="did not end within 0.2 s"):
        camera.run("sleep", "60", bound=0.2)


def test_device_that_cannot_boot_says_why(put_on_desk):
    device = put_on_desk()
    device.instance.write("/opt/orvo/etc/redis/cache.conf", "no-such-word 1\n")
    with pytest.raises(DeviceError, match="redis-cache does not come up"):
        device.power_on()
    assert not device.is_on()


def test_switched_off_device_leaves_no_process_mount_or_socket(put_on_desk, home):
    device = put_on_desk()
    device.power_on()
    inside = device.run("readlink", "/proc/self/ns/pid")[1].strip()
    assert processes_in(inside)
    device.power_off()
    assert processes_in(inside) == []
    assert str(home) not in open("/proc/self/mountinfo").read()
    assert [path for path in home.rglob("*") if path.is_socket()] == []
    assert not device.instance.is_running()


def test_two_devices_do_not_see_each_other(put_on_desk):
    left, right = put_on_desk("left"), put_on_desk("right")
    left.power_on()
    right.power_on()
    left.run("touch", "/tmp/left", "/etc/left")
    assert right.run("ls", "/tmp/left", "/etc/left")[0] != 0
    assert listed(right).count("pictor") == 1
    left.power_off()
    assert poll(lambda: "pictor" in listed(right), 1)
    assert right.run("true") == (0, "")
