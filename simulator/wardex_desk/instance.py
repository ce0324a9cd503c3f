"""The folder in which one simulated device keeps everything it has."""

import contextlib
import fcntl
import os
import re
import shutil
from pathlib import Path
from typing import Iterator, Optional

from wardex_desk.places import REPOSITORY

MARK = ".wardex-device"
LOCK = ".in-use"
DEFAULT_NAME = "camera"
NAME_RULE = re.compile(r"[A-Za-z0-9][A-Za-z0-9._-]{0,39}")


class InstanceError(Exception):
    """The folder cannot be used; the message says why and what to do."""


def default_home() -> Path:
    """Where instance folders go unless told otherwise: in the clone, or in /tmp if that is not ours."""
    if os.access(REPOSITORY, os.W_OK):
        return REPOSITORY / ".run"
    return Path(f"/tmp/wardex-desk-{os.getuid()}")


class Instance:
    """Plain files: what the device sees at /log/scripts is `folder/log/scripts` here.

    Owns:   the folder between claim() and release(); a lock tells other drivers, and goes with
            the process, however it ends.
    Errors: InstanceError for a wrong name, a folder in use or one that is not ours.
    """

    def __init__(self, name: str = DEFAULT_NAME, home: Optional[Path] = None) -> None:
        if not NAME_RULE.fullmatch(name):
            raise InstanceError(
                f"'{name}' cannot name a device: use up to 40 letters, digits, '.', '_' and '-'"
            )
        self.name = name
        self.folder = (home or default_home()).resolve() / name
        self._lock: Optional[int] = None

    def claim(self) -> None:
        """Takes the folder and empties it, whatever an earlier device left there."""
        try:
            self.folder.mkdir(parents=True, exist_ok=True)
            strangers = [path.name for path in self.folder.iterdir()]
            if strangers and MARK not in strangers:
                raise InstanceError(
                    f"{self.folder} is not a device's folder: choose another --name or --home"
                )
            (self.folder / MARK).touch()
            self._lock = os.open(self.folder / LOCK, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o600)
            fcntl.flock(self._lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            self._empty(self.folder, keep=(MARK, LOCK))
        except BlockingIOError:
            self.release()
            raise InstanceError(
                f"the device '{self.name}' is already running: choose another --name"
            ) from None
        except OSError as error:
            self.release()
            raise InstanceError(
                f"{error.filename or self.folder}: {error.strerror}: choose another --home"
            ) from error

    def release(self) -> None:
        """Lets the folder go; its files stay for reading."""
        if self._lock is not None:
            os.close(self._lock)
            self._lock = None

    def is_running(self) -> bool:
        """Whether a driver holds this folder, in this process or another."""
        try:
            descriptor = os.open(self.folder / LOCK, os.O_RDWR | os.O_CLOEXEC)
        except OSError:
            return False
        try:
            fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
            return False
        except BlockingIOError:
            return True
        finally:
            os.close(descriptor)

    def path(self, device_path: str) -> Path:
        """The outside's view of an absolute path of the device."""
        return self.folder / device_path.lstrip("/")

    def write(self, device_path: str, content: str, mode: int = 0o644) -> None:
        """Replaces a file at once: a reader sees the old content or the new, never a part."""
        place = self.path(device_path)
        place.parent.mkdir(parents=True, exist_ok=True)
        fresh = place.with_name(f".{place.name}.{os.getpid()}")
        fresh.write_text(content, encoding="utf-8")
        fresh.chmod(mode)
        fresh.rename(place)

    def read(self, device_path: str) -> str:
        """The file's text, empty while there is no such file."""
        try:
            return self.path(device_path).read_text(encoding="utf-8", errors="replace")
        except FileNotFoundError:
            return ""

    def append(self, device_path: str, line: str) -> None:
        """Adds one line to a journal."""
        with open(self.path(device_path), "a", encoding="utf-8") as journal:
            journal.write(line + "\n")

    def remove(self, device_path: str) -> None:
        """Removes a file; one that is not there is no error."""
        self.path(device_path).unlink(missing_ok=True)

    def empty(self, device_path: str, keep: tuple[str, ...] = ()) -> None:
        """Empties a folder of the device, but for the names to keep."""
        self._empty(self.path(device_path), keep)

    @contextlib.contextmanager
    def socket_address(self, device_path: str) -> Iterator[str]:
        """A name for a socket of the device that fits into the kernel's 108 bytes.

        The folder may lie deep, so its descriptor stands in for it.
        """
        place = self.path(device_path)
        descriptor = os.open(place.parent, os.O_PATH | os.O_CLOEXEC)
        try:
            yield f"/proc/self/fd/{descriptor}/{place.name}"
        finally:
            os.close(descriptor)

    @staticmethod
    def _empty(folder: Path, keep: tuple[str, ...]) -> None:
        for path in folder.iterdir():
            if path.name in keep:
                continue
            if path.is_dir() and not path.is_symlink():
                shutil.rmtree(path)
            else:
                path.unlink()
