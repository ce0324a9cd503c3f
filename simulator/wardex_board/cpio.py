"""Writes the archives that the kernel unpacks as its first root (cpio, "newc").

Shape:  per file a header of "070701" and 13 fields of 8 hexadecimal digits, the name with its zero
        byte, the content; name and content are each padded to 4 bytes. Ends with "TRAILER!!!".
Everything belongs to root and carries the time 0, so that one tree gives one archive. Several
archives may follow each other; a later one replaces files of an earlier one.
"""

import os
import stat
from pathlib import Path
from typing import BinaryIO

MAGIC = "070701"
ALIGNMENT = 4
LAST_NAME = "TRAILER!!!"


def padding(length: int) -> bytes:
    """Zero bytes up to the next multiple of four."""
    return bytes(-length % ALIGNMENT)


class Archive:
    """One archive in the making. Names are relative to the root, without a leading slash."""

    def __init__(self, stream: BinaryIO) -> None:
        self._stream = stream
        self._number = 0
        self._folders: set[str] = set()

    def folder(self, name: str, mode: int = 0o755) -> None:
        """A folder and those above it; one that is there already is left alone."""
        parent = os.path.dirname(name)
        if parent:
            self.folder(parent)
        if name not in self._folders:
            self._folders.add(name)
            self._entry(name, stat.S_IFDIR | mode, b"")

    def file(self, name: str, content: bytes, mode: int = 0o644) -> None:
        """A regular file, and the folders above it."""
        self._parent(name)
        self._entry(name, stat.S_IFREG | mode, content)

    def link(self, name: str, target: str) -> None:
        """A symbolic link, and the folders above it."""
        self._parent(name)
        self._entry(name, stat.S_IFLNK | 0o777, target.encode())

    def console(self) -> None:
        """The node that init needs before anything is mounted."""
        self._parent("dev/console")
        self._entry("dev/console", stat.S_IFCHR | 0o600, b"", (5, 1))

    def tree(self, root: Path, name: str = "") -> None:
        """Everything below a folder of this machine."""
        for entry in sorted(os.scandir(root), key=lambda item: item.name):
            inside = f"{name}/{entry.name}" if name else entry.name
            self.copy(Path(entry.path), inside)

    def copy(self, path: Path, name: str) -> None:
        """One file, link or folder of this machine with all that is in it."""
        if path.is_symlink():
            self.link(name, os.readlink(path))
        elif path.is_dir():
            self.folder(name)
            self.tree(path, name)
        elif path.is_file():
            self.file(name, path.read_bytes(), stat.S_IMODE(path.stat().st_mode))

    def close(self) -> None:
        """The end mark; the stream stays open."""
        self._entry(LAST_NAME, 0, b"")

    def _parent(self, name: str) -> None:
        parent = os.path.dirname(name)
        if parent:
            self.folder(parent)

    def _entry(
        self, name: str, mode: int, content: bytes, device: tuple[int, int] = (0, 0)
    ) -> None:
        self._number += 1
        label = name.encode() + b"\0"
        fields = (
            *(self._number, mode, 0, 0, 1, 0, len(content)),
            *(0, 0, *device, len(label), 0),
        )
        header = MAGIC.encode() + b"".join(b"%08X" % field for field in fields)
        self._stream.write(header + label + padding(len(header) + len(label)))
        self._stream.write(content + padding(len(content)))
