"""A client for the device's two Redis servers, with the standard library alone."""

import socket
from types import TracebackType
from typing import Optional, Union

Reply = Union[None, int, bytes, list["Reply"]]


class RedisError(Exception):
    """The server refused a command, or the connection failed; the message has its words."""


class RedisClient:
    """One connection to a Unix socket. Every call blocks for at most `timeout` seconds."""

    def __init__(self, address: str, timeout: float = 5.0) -> None:
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(timeout)
        try:
            self._socket.connect(address)
        except OSError as error:
            self._socket.close()
            raise RedisError(f"{address}: {error.strerror or error}") from error
        self._stream = self._socket.makefile("rb")

    def __enter__(self) -> "RedisClient":
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def close(self) -> None:
        """Ends the connection."""
        self._stream.close()
        self._socket.close()

    def command(self, *words: Union[str, bytes]) -> Reply:
        """Sends one command and answers its reply; texts come back as bytes."""
        parts = [word.encode() if isinstance(word, str) else word for word in words]
        frame = b"*%d\r\n" % len(parts)
        frame += b"".join(b"$%d\r\n%s\r\n" % (len(part), part) for part in parts)
        try:
            self._socket.sendall(frame)
            return self._reply()
        except OSError as error:
            raise RedisError(f"{words[0]!r}: {error}") from error

    def _reply(self) -> Reply:
        line = self._stream.readline()
        if not line.endswith(b"\r\n"):
            raise RedisError("the server closed the connection")
        kind, rest = line[:1], line[1:-2]
        if kind == b"-":
            raise RedisError(rest.decode(errors="replace"))
        if kind == b":":
            return int(rest)
        if kind == b"$":
            size = int(rest)
            return None if size < 0 else self._stream.read(size + 2)[:-2]
        if kind == b"*":
            return [self._reply() for _ in range(int(rest))]
        return rest
