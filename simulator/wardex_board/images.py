"""What is made once of Debian's packages: kernel, device tree and the board's root.

Kept in the cache under a name that changes with what they are made of, and written under another
name first, so that an interrupted run leaves nothing that looks whole.
"""

import hashlib
import os
import shutil
import time
from dataclasses import dataclass
from pathlib import Path
from typing import Callable

from wardex_board.cpio import Archive
from wardex_board.kernel import ImageError, make_device_tree, unpacked, wrapped
from wardex_board.places import DEBIAN, DEBIAN_KEY, GUEST, IMAGES, PACKAGE
from wardex_desk.places import DEVICE_FILES

DEVICE_TREE = "imx6ul-14x14-evk.dtb"
MODULES = (
    "drivers/i2c/busses/i2c-imx.ko",
    "drivers/misc/eeprom/at24.ko",
    "drivers/watchdog/imx2_wdt.ko",
)
LIBRARIES = "usr/lib/arm-linux-gnueabihf"
# What no program on the board uses: a smaller root boots sooner.
LEFT_OUT = (
    "usr/bin/perl",
    "usr/bin/redis-check-aof",
    "usr/bin/redis-benchmark",
    "usr/bin/udevadm",
    f"{LIBRARIES}/perl",
    f"{LIBRARIES}/gconv/",
    f"{LIBRARIES}/libperl",
    f"{LIBRARIES}/security/",
)
PARTS = ("usr/bin", "usr/sbin", LIBRARIES, "usr/lib/ld-linux-armhf.so.3", "usr/lib/lsb")
PARTS_OF_THE_BUS = ("usr/share/dbus-1",)
KEPT_S = 24 * 3600
FOLDERS = ("proc", "sys", "tmp", "run", "dev", "log", "root", "var", "mnt", "etc/sysdata", "board")


@dataclass(frozen=True)
class Images:
    """The three files that the emulator is started with."""

    kernel: Path
    device_tree: Path
    root: Path


def prepared(tell: Callable[[str], None]) -> Images:
    """The images, made now if need be."""
    folder = IMAGES / _key()
    images = Images(folder / "uImage", folder / "board.dtb", folder / "root.cpio")
    if not folder.is_dir():
        tell("Making the board's kernel and root ...")
        fresh = IMAGES / f"new.{os.getpid()}"
        fresh.mkdir(parents=True)
        packed = _only("boot/vmlinuz-*").read_bytes()
        (fresh / images.kernel.name).write_bytes(wrapped(unpacked(packed)))
        source = _only(f"usr/lib/linux-image-*/{DEVICE_TREE}")
        make_device_tree(source, fresh / images.device_tree.name)
        with open(fresh / images.root.name, "wb") as stream:
            _write_root(Archive(stream))
        try:
            fresh.rename(folder)
        except OSError:
            # Another command was faster.
            shutil.rmtree(fresh)
    os.utime(folder)
    _forget_unused()
    return images


def _forget_unused() -> None:
    """Another command may play with images of another tree at this moment, but not since yesterday."""
    for folder in IMAGES.iterdir():
        if time.time() - folder.stat().st_mtime > KEPT_S:
            shutil.rmtree(folder, ignore_errors=True)


def _key() -> str:
    try:
        digest = hashlib.sha256(DEBIAN_KEY.read_bytes())
    except OSError as error:
        raise ImageError(f"{error}: packaging/prepare-armhf board makes it") from error
    for source in (PACKAGE, GUEST, DEVICE_FILES / "root"):
        for path in sorted(source.rglob("*") if source != PACKAGE else source.glob("*.py")):
            if path.is_file():
                digest.update(path.name.encode() + path.read_bytes())
    return digest.hexdigest()[:16]


def _only(pattern: str) -> Path:
    found = sorted(DEBIAN.glob(pattern))
    if len(found) != 1:
        raise ImageError(f"{DEBIAN}/{pattern}: {len(found)} files instead of one")
    return found[0]


def _write_root(archive: Archive) -> None:
    for folder in FOLDERS:
        archive.folder(folder)
    archive.console()
    for name in ("bin", "sbin", "lib"):
        archive.link(name, f"usr/{name}")
    for part in (*PARTS, *PARTS_OF_THE_BUS):
        _add(archive, DEBIAN / part, part)
    for name in ("init", "reboot", "poweroff", "halt"):
        archive.link(f"usr/sbin/{name}", "../bin/busybox")
    archive.link("init", "sbin/init")
    modules = _only("usr/lib/modules/*/kernel")
    for module in MODULES:
        archive.file(f"board/modules/{Path(module).name}", (modules / module).read_bytes())
    archive.tree(DEVICE_FILES / "root")
    for path in sorted(GUEST.iterdir()):
        name = "etc/inittab" if path.name == "inittab" else f"board/{path.name}"
        archive.file(name, path.read_bytes(), 0o755)
    archive.close()


def _add(archive: Archive, path: Path, name: str) -> None:
    if name.startswith(LEFT_OUT):
        return
    if path.is_symlink() or not path.is_dir():
        archive.copy(path, name)
        return
    archive.folder(name)
    for entry in sorted(path.iterdir()):
        _add(archive, entry, f"{name}/{entry.name}")
