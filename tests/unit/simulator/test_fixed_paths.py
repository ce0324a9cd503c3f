"""The device's paths in a container's own file system."""

import os

import pytest

from wardex_desk.box import BoxError
from wardex_desk.container_box import objection
from wardex_desk.fixed_paths import LINKS, SOCKETS, FixedPaths
from wardex_desk.instance import Instance

CONTAINER = "pid:[4026532177]"


@pytest.fixture
def folder(tmp_path):
    """A device's folder."""
    instance = Instance("camera", tmp_path / "home")
    instance.claim()
    return instance.folder


@pytest.fixture
def root(tmp_path):
    """A container's file system."""
    place = tmp_path / "root"
    (place / "dev").mkdir(parents=True)
    return place


def entries(root):
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if not path.is_dir())


def test_every_link_leads_into_the_devices_folder(folder, root):
    FixedPaths(folder, root).lay(watchdog=True)
    for path in LINKS:
        assert os.readlink(f"{root}{path}") == f"{folder}{path}"
    assert (root / "dev/watchdog").is_file()


def test_sockets_can_be_reached_from_the_devices_folder(folder, root):
    FixedPaths(folder, root).lay(watchdog=True)
    for path in SOCKETS:
        assert os.readlink(f"{folder}{path}") == f"{root}{path}"


def test_device_without_a_watchdog_has_no_node(folder, root):
    FixedPaths(folder, root).lay(watchdog=False)
    assert not (root / "dev/watchdog").exists()


def test_lifting_takes_all_away(folder, root):
    paths = FixedPaths(folder, root)
    paths.lay(watchdog=True)
    for path in SOCKETS:
        (root / path.lstrip("/")).touch()
    paths.lift()
    assert entries(root) == []
    assert not [path for path in folder.rglob("*") if path.is_symlink()]


@pytest.mark.parametrize(
    "path",
    [
        "/tmp/redis.sock",
        "/tmp/redis-cache.sock",
        "/tmp/quorld.sock",
        "/run/dbus/system_bus_socket",
        "/dev/log",
        "/dev/watchdog",
        "/opt/orvo",
        "/etc/init.d/mf-optware",
        "/etc/mirrorfin_develop",
        "/log",
        "/run/pictor.pid",
    ],
)
def test_path_of_somebody_else_is_named_and_left_alone(folder, root, path):
    place = root / path.lstrip("/")
    place.parent.mkdir(parents=True, exist_ok=True)
    place.write_text("mine")
    with pytest.raises(BoxError, match=f"{path} belongs to somebody else"):
        FixedPaths(folder, root).lay(watchdog=True)
    assert entries(root) == [path.lstrip("/")]
    assert place.read_text() == "mine"


def test_link_to_elsewhere_belongs_to_somebody_else(folder, root, tmp_path):
    (root / "log").symlink_to(tmp_path / "var/log")
    with pytest.raises(BoxError, match="/log belongs to somebody else"):
        FixedPaths(folder, root).check()


def test_links_that_a_killed_driver_left_are_taken_over(folder, root):
    FixedPaths(folder, root).lay(watchdog=False)
    FixedPaths(folder, root).lay(watchdog=False)
    assert os.readlink(root / "log") == f"{folder}/log"


def test_container_of_root_is_a_box():
    assert objection(CONTAINER, 0, panic_can_be_written=False) is None


@pytest.mark.parametrize(
    "processes, user, panic, reason",
    [
        ("pid:[4026531836]", 0, False, "this is no container but the machine itself"),
        (CONTAINER, 1000, False, "only root can use the container itself as the box"),
        (CONTAINER, 0, True, "/proc/sys/kernel/panic can be written here"),
    ],
    ids=["machine", "user", "panic-setting"],
)
def test_no_other_place_is_a_box(processes, user, panic, reason):
    assert objection(processes, user, panic).startswith(reason)
