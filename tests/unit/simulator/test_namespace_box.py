"""What the box is made of, without making one."""

from pathlib import Path

import pytest

from wardex_desk.boot import panic_setting_is_masked
from wardex_desk.box import BoxError, Programs, device_environment
from wardex_desk.namespace_box import Layout

PANIC = "/proc/sys/kernel/panic"


def options(user_namespace=False, environment=None):
    programs = Programs(Path("/built/bin"), Path("/built/bin/wardex"))
    return Layout(Path("/i/camera"), programs, user_namespace, environment or {}).options()


def place_of(words, *sequence):
    """Where these words follow each other."""
    wanted = list(sequence)
    return next(i for i in range(len(words)) if words[i : i + len(wanted)] == wanted)


def test_processes_network_and_messages_are_the_boxs_own():
    for namespace in ("pid", "net", "ipc", "uts"):
        assert f"--unshare-{namespace}" in options()


def test_box_ends_with_its_driver_and_has_no_terminal():
    assert "--die-with-parent" in options()
    assert "--new-session" in options()


def test_root_keeps_its_rights():
    assert "--unshare-user" not in options(user_namespace=False)


def test_user_becomes_root_inside():
    place_of(options(user_namespace=True), "--unshare-user", "--uid", "0", "--gid", "0")


def test_panic_setting_is_covered_after_proc_is_there_and_never_tried_only():
    words = options()
    covered = place_of(words, "--bind", "/i/camera" + PANIC, PANIC)
    assert covered > place_of(words, "--proc", "/proc")


def test_watchdog_is_covered_after_dev_is_there():
    words = options()
    node = place_of(words, "--bind-try", "/i/camera/dev/watchdog", "/dev/watchdog")
    assert node > place_of(words, "--dev", "/dev")


def test_nothing_of_the_machine_can_be_written():
    words = options()
    writable = [words[i + 1] for i in range(len(words)) if words[i] in ("--bind", "--bind-try")]
    assert writable and not [path for path in writable if not path.startswith("/i/camera/")]


def test_reboot_of_the_device_comes_first_in_the_path():
    path = device_environment()["PATH"]
    assert path.split(":")[0] == "/desk/simulator/device/stubs"


def test_persons_environment_stays_outside_but_for_what_is_passed_on(monkeypatch):
    monkeypatch.setenv("ASAN_OPTIONS", "x=1")
    monkeypatch.setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/mine")
    words = options(environment=device_environment())
    assert "--clearenv" in words
    place_of(words, "--setenv", "ASAN_OPTIONS", "x=1")
    assert "DBUS_SYSTEM_BUS_ADDRESS" not in words


def test_missing_program_is_named(tmp_path):
    with pytest.raises(BoxError, match=f"{tmp_path}/wardex is not built"):
        Programs(tmp_path, tmp_path / "wardex").check()


HOST = "25 30 0:23 / /proc rw,nosuid shared:13 - proc proc rw"
MASK = "94 90 254:0 /i/camera/panic /proc/sys/kernel/panic rw,relatime - ext4 /dev/vda rw"


def test_covered_panic_setting_is_recognised():
    assert panic_setting_is_masked(f"{HOST}\n{MASK}\n")


@pytest.mark.parametrize(
    "mounts",
    ["", HOST, MASK.replace("kernel/panic rw", "kernel rw"), MASK.replace("- ext4", "- proc")],
    ids=["no-mounts", "not-covered", "only-its-folder", "covered-by-proc-itself"],
)
def test_open_panic_setting_is_recognised(mounts):
    assert not panic_setting_is_masked(mounts)
