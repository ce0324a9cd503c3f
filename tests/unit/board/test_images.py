"""What the board is started with: archives, the kernel's header, the device tree."""

import io
import lzma
import shutil
import struct
import subprocess
import zlib

import pytest

from wardex_board import cpio, kernel

BASE_TREE = """/dts-v1/;
/ {
    soc {
        bus@2100000 {
            i2c@21a8000 { #address-cells = <1>; #size-cells = <0>; status = "disabled"; };
        };
    };
};
"""


def listed(archive: bytes):
    done = subprocess.run(
        ["busybox", "cpio", "-itv"], input=archive, capture_output=True, check=True
    )
    return [line.split() for line in done.stdout.decode().splitlines()]


def made(fill) -> bytes:
    stream = io.BytesIO()
    archive = cpio.Archive(stream)
    fill(archive)
    archive.close()
    return stream.getvalue()


def test_archive_has_the_form_that_the_kernel_reads():
    content = made(lambda archive: archive.file("a", b"hello", 0o755))
    assert content[:6] == b"070701"
    fields = [int(content[6 + 8 * i : 14 + 8 * i], 16) for i in range(13)]
    number, mode, owner, group, links, time, size = fields[:7]
    assert (number, mode, owner, group, links, time, size) == (1, 0o100755, 0, 0, 1, 0, 5)
    assert fields[11] == len("a\0")
    assert content[110:112] == b"a\0"
    assert content[112:120] == b"hello\0\0\0"
    assert content[120:126] == b"070701"
    assert b"TRAILER!!!\0" in content and len(content) % 4 == 0


def test_folders_come_before_what_is_in_them_and_once():
    content = made(lambda archive: (archive.file("x/y/a", b""), archive.link("x/y/b", "a")))
    names = [
        content[i + 110 :].split(b"\0")[0]
        for i in range(len(content))
        if content.startswith(b"070701", i)
    ]
    assert names == [b"x", b"x/y", b"x/y/a", b"x/y/b", b"TRAILER!!!"]


def test_one_tree_gives_one_archive(tmp_path):
    (tmp_path / "etc").mkdir()
    (tmp_path / "etc/b").write_text("2")
    (tmp_path / "etc/a").symlink_to("b")
    first = made(lambda archive: archive.tree(tmp_path))
    (tmp_path / "etc/b").write_text("2")
    assert made(lambda archive: archive.tree(tmp_path)) == first


@pytest.mark.skipif(shutil.which("busybox") is None, reason="busybox reads the archive")
def test_archive_is_read_by_others():
    content = made(
        lambda archive: (
            archive.console(),
            archive.file("bin/a", b"x", 0o755),
            archive.link("bin/b", "a"),
        )
    )
    assert [line[0] for line in listed(content)] == [
        "drwxr-xr-x",
        "crw-------",
        "drwxr-xr-x",
        "-rwxr-xr-x",
        "lrwxrwxrwx",
    ]


def test_kernel_is_found_behind_the_unpacking_codes_own_magic():
    packed = b"code" + kernel.XZ_MAGIC + b"no archive" + lzma.compress(b"kernel" * 100) + b"tail"
    assert kernel.unpacked(packed) == b"kernel" * 100


def test_kernel_without_an_archive_is_told():
    with pytest.raises(kernel.ImageError, match="xz"):
        kernel.unpacked(b"gzip")


def test_kernels_header_says_where_it_goes():
    image = kernel.wrapped(b"kernel")
    header = image[:64]
    magic, checksum, _, size, load, entry, data = struct.unpack(">7I", header[:28])
    assert (magic, size, load, entry) == (0x27051956, 6, 0x80208000, 0x80208000)
    assert data == zlib.crc32(b"kernel")
    assert checksum == zlib.crc32(header[:4] + bytes(4) + header[8:])
    assert image[64:] == b"kernel"


@pytest.mark.skipif(shutil.which("fdtput") is None, reason="device-tree-compiler is not installed")
def test_device_tree_has_an_eeprom_at_each_place(tmp_path):
    base, tree = tmp_path / "base.dtb", tmp_path / "board.dtb"
    subprocess.run(["dtc", "-q", "-o", base], input=BASE_TREE.encode(), check=True)
    kernel.make_device_tree(base, tree)

    def get(*words: str) -> str:
        done = subprocess.run(
            ["fdtget", *words[:-2], tree, *words[-2:]], capture_output=True, check=True
        )
        return done.stdout.decode().strip()

    assert get(kernel.I2C_BUS, "status") == "okay"
    for address in (0x50, 0x52, 0x53, 0x54, 0x55, 0x56):
        node = f"{kernel.I2C_BUS}/eeprom@{address:x}"
        assert get("-tx", node, "reg") == f"{address:x}"
        assert get("-tu", node, "size") == "128"
        assert get("-tu", node, "address-width") == "16"
