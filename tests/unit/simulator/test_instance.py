"""The folder of one device."""

import socket

import pytest

from wardex_desk.instance import Instance, InstanceError


def claimed(home, name="camera"):
    instance = Instance(name, home)
    instance.claim()
    return instance


@pytest.mark.parametrize("name", ["", ".", "..", "-a", "a/b", "a b", "a" * 41, "\u00e4"])
def test_name_that_is_no_folder_name_is_refused(tmp_path, name):
    with pytest.raises(InstanceError, match="cannot name a device"):
        Instance(name, tmp_path)


def test_longest_name_is_taken(tmp_path):
    assert Instance("a" * 40, tmp_path).folder == tmp_path / ("a" * 40)


def test_second_claim_of_a_folder_is_refused(tmp_path):
    first = claimed(tmp_path)
    with pytest.raises(InstanceError, match="already running: choose another --name"):
        Instance("camera", tmp_path).claim()
    assert first.is_running()


def test_devices_of_two_names_stand_side_by_side(tmp_path):
    claimed(tmp_path, "left")
    claimed(tmp_path, "right")
    assert Instance("left", tmp_path).is_running()
    assert Instance("right", tmp_path).is_running()


def test_released_folder_can_be_claimed_again(tmp_path):
    first = claimed(tmp_path)
    first.release()
    assert not first.is_running()
    claimed(tmp_path)


def test_folder_that_was_never_used_is_not_running(tmp_path):
    assert not Instance("camera", tmp_path).is_running()
    assert not (tmp_path / "camera").exists()


def test_claim_empties_what_an_earlier_device_left(tmp_path):
    first = claimed(tmp_path)
    first.write("/log/scripts", "old")
    first.path("/var").symlink_to(tmp_path)
    (tmp_path / "stranger").write_text("mine")
    first.release()
    claimed(tmp_path)
    assert not (tmp_path / "camera/log").exists()
    assert not (tmp_path / "camera/var").is_symlink()
    assert (tmp_path / "stranger").read_text() == "mine"


def test_folder_of_somebody_else_is_left_alone(tmp_path):
    (tmp_path / "camera").mkdir()
    (tmp_path / "camera/thesis.txt").write_text("work of years")
    with pytest.raises(InstanceError, match="is not a device's folder"):
        Instance("camera", tmp_path).claim()
    assert (tmp_path / "camera/thesis.txt").read_text() == "work of years"


def test_home_that_cannot_be_made_is_named(tmp_path):
    (tmp_path / "file").write_text("")
    with pytest.raises(InstanceError, match="file.*Not a directory.*--home"):
        Instance("camera", tmp_path / "file").claim()


def test_write_replaces_at_once_and_leaves_no_other_file(tmp_path):
    instance = claimed(tmp_path)
    instance.write("/run/orders/pictor", "hang\n")
    before = instance.path("/run/orders/pictor").stat().st_ino
    instance.write("/run/orders/pictor", "up\n")
    assert instance.read("/run/orders/pictor") == "up\n"
    assert instance.path("/run/orders/pictor").stat().st_ino != before
    assert [path.name for path in instance.path("/run/orders").iterdir()] == ["pictor"]


def test_missing_file_reads_as_empty_and_can_be_removed(tmp_path):
    instance = claimed(tmp_path)
    assert instance.read("/etc/mirrorfin_develop") == ""
    instance.remove("/etc/mirrorfin_develop")


def test_empty_keeps_what_it_is_told_to_keep(tmp_path):
    instance = claimed(tmp_path)
    instance.write("/run/orders/pictor", "hang\n")
    instance.write("/run/pictor.pid", "1\n")
    instance.write("/run/dbus/socket", "")
    instance.empty("/run", keep=("orders",))
    assert [path.name for path in instance.path("/run").iterdir()] == ["orders"]
    assert instance.read("/run/orders/pictor") == "hang\n"


def test_socket_in_a_deep_folder_can_be_reached(tmp_path):
    deep = tmp_path / ("d" * 100)
    instance = claimed(deep)
    instance.path("/run").mkdir()
    with socket.socket(socket.AF_UNIX) as server, socket.socket(socket.AF_UNIX) as client:
        with instance.socket_address("/run/control") as address:
            assert len(address) < 108
            server.bind(address)
            server.listen()
            client.connect(address)
    assert instance.path("/run/control").is_socket()
