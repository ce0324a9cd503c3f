"""A program on the device that lets the system bus crash in the middle of a call; inside the box.

    python3 -m wardex_desk.bus_gap WORD TIMES

takes the place of the bus's socket and hands on all that passes. When the word has been sent to the
bus so many times, by whomever, it is not handed on any more: all connections end as when the bus's
process dies, and nobody listens at the socket.
"""

import os
import selectors
import socket
import sys

from wardex_desk.places import BUS_SOCKET

REAL_SOCKET = f"{BUS_SOCKET}.real"
READY = "ready"
CHUNK = 65536


class Gap:
    """What stands between the bus and its programs until the word has come so many times."""

    def __init__(self, word: str, times: int) -> None:
        self._word = word.encode() + b"\0"
        self._left = times
        self._other: dict[socket.socket, socket.socket] = {}
        self._programs: set[socket.socket] = set()
        self._selector = selectors.DefaultSelector()
        os.rename(BUS_SOCKET, REAL_SOCKET)
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._listener.bind(BUS_SOCKET)
        self._listener.listen()
        self._selector.register(self._listener, selectors.EVENT_READ)

    def run(self) -> None:
        """Hands on until the word has come."""
        while self._left > 0:
            for key, _ in self._selector.select():
                end = key.fileobj
                assert isinstance(end, socket.socket)
                if end is self._listener:
                    self._accept()
                else:
                    self._hand_on(end)
        os.unlink(BUS_SOCKET)

    def _accept(self) -> None:
        program, _ = self._listener.accept()
        bus = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        bus.connect(REAL_SOCKET)
        self._programs.add(program)
        for end, other in ((program, bus), (bus, program)):
            self._other[end] = other
            self._selector.register(end, selectors.EVENT_READ)

    def _hand_on(self, end: socket.socket) -> None:
        data = end.recv(CHUNK)
        if end in self._programs:
            self._left -= data.count(self._word)
        if not data:
            self._selector.unregister(end)
            self._other[end].shutdown(socket.SHUT_WR)
        elif self._left > 0:
            self._other[end].sendall(data)


def main(word: str, times: str) -> int:
    """Ends, and the bus with it, when the word has come."""
    gap = Gap(word, int(times))
    print(READY, flush=True)
    gap.run()
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
