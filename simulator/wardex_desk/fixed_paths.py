"""The device's paths laid over a container's own, and taken off again."""

import os
from pathlib import Path

from wardex_desk.box import BoxError
from wardex_desk.instance import LOCK, MARK
from wardex_desk.places import (
    BUS_SOCKET,
    CACHE_SOCKET,
    DESK,
    DESK_STATE,
    DEVELOPER_MARKERS,
    KNOBS,
    LOGS,
    ORDERS,
    PACKAGE_SCRIPT,
    SERVICES,
    STORE_SOCKET,
    SYSLOG_SOCKET,
    WATCHDOG_NODE,
)

QUORL_SOCKET = "/tmp/quorld.sock"
# Links to the instance folder.
LINKS = (
    *(DESK, LOGS, ORDERS, KNOBS, DESK_STATE, "/opt/orvo"),
    *(PACKAGE_SCRIPT, DEVELOPER_MARKERS[0], str(Path(DEVELOPER_MARKERS[1]).parent)),
)
# What the device's programs make themselves.
SOCKETS = (BUS_SOCKET, CACHE_SOCKET, STORE_SOCKET, QUORL_SOCKET, SYSLOG_SOCKET)
LEFTOVERS = tuple(f"/run/{service}.pid" for service in SERVICES)


class FixedPaths:
    """The paths of one device in a container, whose file system is `root` (/ but in tests).

    Owns:   what lay() puts there, until lift(). What belongs to somebody else is never touched.
    Errors: BoxError from check() and lay(), naming the path.
    """

    def __init__(self, folder: Path, root: Path = Path("/")) -> None:
        self._folder = folder
        self._root = root

    def check(self) -> None:
        """Raises BoxError when one of the paths is somebody else's."""
        for path in (*LINKS, *SOCKETS, *LEFTOVERS, WATCHDOG_NODE):
            place = self._at(path)
            if os.path.lexists(place) and not _left_by_a_device(place):
                raise BoxError(f"{place} belongs to somebody else (remove it if nobody needs it)")

    def lay(self, watchdog: bool) -> None:
        """Puts the device's paths in place, with a watchdog node or without."""
        self.check()
        self.lift()
        for path in (*LINKS, *SOCKETS):
            self._at(path).parent.mkdir(parents=True, exist_ok=True)
        for path in LINKS:
            self._at(path).symlink_to(self._inside(path))
        for path in SOCKETS:
            # From the instance folder the sockets can be reached as in any other box.
            inside = self._inside(path)
            inside.parent.mkdir(parents=True, exist_ok=True)
            inside.unlink(missing_ok=True)
            inside.symlink_to(self._at(path))
        if watchdog:
            self._at(WATCHDOG_NODE).touch()

    def lift(self) -> None:
        """Takes away what the device has put there."""
        for path in (*LINKS, *SOCKETS, *LEFTOVERS, WATCHDOG_NODE):
            self._at(path).unlink(missing_ok=True)
        for path in SOCKETS:
            inside = self._inside(path)
            if inside.is_symlink():
                inside.unlink()

    def _at(self, path: str) -> Path:
        return self._root / path.lstrip("/")

    def _inside(self, path: str) -> Path:
        return self._folder / path.lstrip("/")


def _left_by_a_device(place: Path) -> bool:
    """Whether this is a link into an instance folder, as a killed driver leaves them."""
    if not place.is_symlink():
        return False
    target = Path(os.readlink(place))
    return any((folder / MARK).exists() and (folder / LOCK).exists() for folder in target.parents)
