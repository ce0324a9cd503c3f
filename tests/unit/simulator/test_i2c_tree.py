"""The bus that libudev walks, as plain files."""

import os

from wardex_desk.i2c_tree import I2cTree


def new_tree(root):
    tree = I2cTree(root)
    tree.create()
    return tree


def test_device_is_found_by_its_name_on_the_bus(tmp_path):
    new_tree(tmp_path).put("2-0054", b"image")
    device = tmp_path / "bus/i2c/devices/2-0054"
    assert (device / "eeprom").read_bytes() == b"image"
    assert (device / "driver").resolve() == tmp_path / "bus/i2c/drivers/at24"
    assert (device / "subsystem").resolve() == tmp_path / "bus/i2c"
    assert "DRIVER=at24\n" in (device / "uevent").read_text()
    assert device.resolve() == tmp_path / "devices/platform/soc/i2c.2/i2c-2/2-0054"


def test_links_stay_inside_the_tree(tmp_path):
    new_tree(tmp_path).put("2-0054", b"image")
    links = [path for path in tmp_path.rglob("*") if path.is_symlink()]
    assert len(links) == 5
    assert not [link for link in links if os.path.isabs(os.readlink(link))]


def test_driver_and_place_can_be_others(tmp_path):
    new_tree(tmp_path).put("3-0054", b"image", driver="lm75", parent="devices/2-0054")
    device = tmp_path / "bus/i2c/devices/3-0054"
    assert device.resolve() == tmp_path / "devices/2-0054/3-0054"
    assert (device / "driver").resolve().name == "lm75"


def test_device_without_a_driver_has_no_link(tmp_path):
    new_tree(tmp_path).put("2-0054", b"image", driver=None)
    assert not (tmp_path / "bus/i2c/devices/2-0054/driver").exists()


def test_content_changes_in_place(tmp_path):
    tree = new_tree(tmp_path)
    tree.put("2-0054", b"old")
    tree.put("2-0054", b"new")
    assert tree.content("2-0054") == b"new"
    assert sorted(os.listdir(tmp_path / "bus/i2c/devices")) == ["2-0054", "i2c-2"]


def test_device_without_content_has_no_file(tmp_path):
    tree = new_tree(tmp_path)
    tree.put("2-0054", None)
    assert (tmp_path / "bus/i2c/devices/2-0054/uevent").exists()
    assert tree.content("2-0054") is None


def test_removed_device_leaves_the_others(tmp_path):
    tree = new_tree(tmp_path)
    tree.put("2-0054", b"F")
    tree.put("2-0053", b"M")
    tree.remove("2-0054")
    tree.remove("2-0055")
    assert tree.content("2-0054") is None
    assert tree.content("2-0053") == b"M"
    assert sorted(os.listdir(tmp_path / "bus/i2c/devices")) == ["2-0053", "i2c-2"]
