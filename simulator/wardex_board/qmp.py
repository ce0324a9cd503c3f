"""The emulator's own voice: how the board's life ends, and the switch that ends it.

Shape: one JSON object per line over a Unix socket; events come unasked between the answers.
"""

import json
import socket
from contextlib import suppress
from pathlib import Path
from typing import Any, Optional

from wardex_desk.waiting import now, poll

CONNECT_BOUND_S = 20.0


class QmpError(Exception):
    """The emulator does not answer as it should."""


class Qmp:
    """One connection. Not for several threads."""

    def __init__(self, path: Path) -> None:
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._rest = b""
        try:
            if not poll(lambda: self._connect(path), CONNECT_BOUND_S, 0.05):
                raise QmpError(f"the emulator does not listen at {path}")
            if self._await_message(CONNECT_BOUND_S) is None:
                raise QmpError(f"the emulator does not greet at {path}")
            self.send("qmp_capabilities")
        except BaseException:
            self._socket.close()
            raise

    def _connect(self, path: Path) -> bool:
        try:
            self._socket.connect(str(path))
        except OSError:
            return False
        return True

    def close(self) -> None:
        self._socket.close()

    def send(self, command: str) -> None:
        """Gives an order; its answer is passed over by events()."""
        self._socket.sendall(json.dumps({"execute": command}).encode() + b"\n")

    def quit(self) -> None:
        """Ends the emulator, if it is not ending by itself."""
        with suppress(OSError):
            self.send("quit")

    def event(self, bound: float) -> Optional[dict[str, Any]]:
        """The next event, or None when there is none within the bound or the emulator has ended."""
        end = now() + bound
        while (left := end - now()) > 0:
            message = self._await_message(left)
            if message is None:
                return None
            if "event" in message:
                return message
        return None

    def _await_message(self, bound: float) -> Optional[dict[str, Any]]:
        end = now() + bound
        while b"\n" not in self._rest:
            self._socket.settimeout(max(end - now(), 0.001))
            try:
                piece = self._socket.recv(65536)
            except (TimeoutError, ConnectionError):
                return None
            if not piece:
                return None
            self._rest += piece
        line, _, self._rest = self._rest.partition(b"\n")
        try:
            message = json.loads(line)
        except ValueError:
            message = None
        if not isinstance(message, dict):
            raise QmpError(f"the emulator says {line!r}")
        return message
