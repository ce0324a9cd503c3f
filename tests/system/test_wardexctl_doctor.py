"""What doctor finds on a device on which something is wrong, and what it says to do."""

import json
import os

import pytest
from camera import PICTOR

from wardex_desk.eeprom import Record

FINE, TROUBLE, SILENT = 0, 1, 5
MARKER = "/etc/mirrorfin_develop"
POLICY = "/opt/orvo/etc/dbus-1/system.d/com.orvo.wardex.conf"
TIMEOUT = "/sys/class/watchdog/watchdog0/timeout"
SCRIPTS = "/opt/orvo/etc/init.d"
CACHE = "/tmp/redis-cache.sock"
FIT = "Nobody feeds it during a script: make the script quicker, or the time-out longer in the boot"
NO_FAMILY = "The record of module F or M decides: have it written again."


@pytest.fixture
def developers(boot):
    """A camera on which nothing is restarted, so that it can be taken to pieces."""
    camera = boot(developer=True)
    camera.await_stable()
    return camera


def examine(camera):
    """The exit status, and what was found that is not fine: {object: (grade, text, remedy)}."""
    status, output = camera.run("wardexctl", "doctor", "--json", bound=60.0)
    answer = json.loads([line for line in output.splitlines() if line.startswith("{")][-1])
    found = {}
    for finding in answer["findings"]:
        if finding["grade"] != "fine":
            key = finding["object"]
            assert key not in found
            found[key] = (finding["grade"], finding["text"], finding["remedy"])
    assert answer["healthy"] == all(grade != "trouble" for grade, _, _ in found.values())
    return status, found


def write_records(camera, *records):
    """Adds records of the supervisor at times of its clock."""
    process = camera.process()
    with camera.connect_redis() as cache:
        for time, text in records:
            record = f'{{"T":"{time}", "P":"{process}", "C":"WARN", "S":"wardex", "M":"{text}"}}'
            cache.command("RPUSH", "LOG:ENTRIES", record)


def test_scripts_that_are_missing_or_cannot_be_run_are_found(developers):
    developers.instance.remove(f"{SCRIPTS}/10_wirl")
    developers.instance.path(f"{SCRIPTS}/20_quorl").chmod(0o644)
    developers.instance.remove("/etc/init.d/mf-optware")
    status, found = examine(developers)
    assert status == TROUBLE
    assert found[f"{SCRIPTS}/10_wirl"] == (
        "trouble",
        "wirl cannot be started: No such file or directory",
        "Install the package that brings it.",
    )
    assert found[f"{SCRIPTS}/20_quorl"] == (
        "trouble",
        "quorl cannot be started: it is not executable",
        f"chmod 755 {SCRIPTS}/20_quorl",
    )
    assert found["/etc/init.d/mf-optware"][:2] == (
        "trouble",
        "the whole package cannot be started: No such file or directory",
    )


def test_time_out_of_the_watchdog_is_compared_with_the_longest_script(developers):
    place = developers.instance.path(TIMEOUT)
    place.parent.mkdir(parents=True)
    place.write_text("12\n")
    assert "/dev/watchdog" not in examine(developers)[1]
    write_records(
        developers,
        ("100.0000", f"Service {PICTOR} considered dead, restarting"),
        ("115.0000", "the next"),
        ("200.0000", f"Service {PICTOR} considered dead, restarting"),
        ("203.0000", "the next"),
    )
    status, found = examine(developers)
    assert (status, found["/dev/watchdog"][:2]) == (
        TROUBLE,
        (
            "trouble",
            "its time-out is 12 s; longest script run in the log 15 s (the scripts of pictor)",
        ),
    )
    assert found["/dev/watchdog"][2].startswith(FIT)
    place.write_text("60\n")
    assert "/dev/watchdog" not in examine(developers)[1]


def test_watchdog_that_is_missing_or_was_not_fed_is_found(boot):
    camera = boot(developer=True, without={"watchdog"})
    camera.await_stable()
    status, found = examine(camera)
    assert (status, found["/dev/watchdog"]) == (
        TROUBLE,
        (
            "trouble",
            "is missing: No such file or directory",
            "Load the watchdog's driver: a supervisor that hangs is not reset.",
        ),
    )


def test_wall_clock_that_was_set_is_found(developers):
    socket = developers.instance.path(CACHE)
    made = socket.stat().st_mtime
    os.utime(socket, (made - 7200, made - 7200))
    status, found = examine(developers)
    assert (status, found["wall clock"][0]) == (FINE, "note")
    assert found["wall clock"][1] == "was set forward by 2 h 00 min since the log's server started"
    os.utime(socket, (made + 600, made + 600))
    assert examine(developers)[1]["wall clock"][1].startswith("was set back by ")
    os.utime(socket, (made, made))
    assert "wall clock" not in examine(developers)[1]


def test_eeprom_that_is_damaged_is_found_and_the_family_that_follows(developers):
    developers.damage_eeprom("A", "crc")
    status, found = examine(developers)
    assert (status, found["EEPROM A (2-0050)"]) == (
        TROUBLE,
        (
            "trouble",
            "type code 300: header or checksum is wrong",
            "It counts as missing: have the record written again.",
        ),
    )
    assert "device family" not in found
    developers.damage_eeprom("F", "crc")
    developers.damage_eeprom("M", "gone")
    found = examine(developers)[1]
    assert found["EEPROM F (2-0054)"][1] == "type code 340: header or checksum is wrong"
    assert found["EEPROM M (2-0053)"] == ("note", "not fitted, or not readable", None)
    assert found["device family"] == (
        "trouble",
        "no EEPROM says one: the supervisor gives up at its start",
        NO_FAMILY,
    )
    developers.write_eeprom(Record("M", "101"))
    assert examine(developers)[1]["device family"] == (
        "trouble",
        "the supervisor found ZK4XX at its start",
        "The EEPROMs changed since: start the supervisor again.",
    )


def test_family_without_the_services_that_are_judged_is_found(boot):
    camera = boot(family="ZM7xx", developer=True)
    camera.await_bus_name()
    status, found = examine(camera)
    assert (status, found["device family"]) == (
        TROUBLE,
        (
            "trouble",
            "runs neither corvane nor pictor, which the machines wait for: the device is judged "
            "unstable, and rebooted in the end",
            "Keep it in developer mode, or do not run the supervisor there.",
        ),
    )


def test_marker_files_are_compared_with_the_mode_of_the_supervisor(developers):
    status, found = examine(developers)
    assert (status, found[MARKER][0]) == (FINE, "note")
    assert found[MARKER][1] == "exists: developer mode, nothing is restarted or rebooted"
    developers.developer(False)
    status, found = examine(developers)
    assert (status, found["developer mode"]) == (
        TROUBLE,
        (
            "trouble",
            "the supervisor started in it, and the marker files changed since",
            "Start the supervisor again.",
        ),
    )


def test_bus_policy_that_is_missing_is_found(put_on_desk):
    camera = put_on_desk(developer=True)
    camera.instance.remove(POLICY)
    camera.power_on()
    camera.await_stable()
    status, found = examine(camera)
    assert (status, found["com.orvo.wardex"]) == (
        SILENT,
        (
            "trouble",
            "the supervisor runs, and does not own its name",
            "Install its bus policy, reload the bus (SIGHUP to dbus-daemon), and start the "
            "supervisor again.",
        ),
    )


def test_log_that_the_supervisor_has_lost_is_found(developers):
    developers.redis("restart")
    status, found = examine(developers)
    assert status == TROUBLE
    assert found[CACHE] == (
        "trouble",
        "Redis started after the supervisor, which has lost its log",
        "Start the supervisor again: its logger does not connect again.",
    )
    assert "/tmp/redis.sock" not in found


def test_bus_that_is_gone_is_found(developers):
    developers.bus("stop")
    status, found = examine(developers)
    assert (status, found["system bus"][0]) == (SILENT, "trouble")
    assert found["system bus"][2] == (
        "Start dbus-daemon, then the supervisor: it does not connect again."
    )
