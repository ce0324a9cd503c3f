#!/usr/bin/python3
"""Calls a method on a bus by its name alone, without an interface, as the wire allows.

    bare_call.py SOCKET DESTINATION PATH METHOD [TEXT]...

Prints the reply's error name, or "answered". The usual programs all insist on an interface.
"""

import os
import socket
import struct
import sys

CALL, RETURN, ERROR = 1, 2, 3
PATH, MEMBER, ERROR_NAME, REPLY_TO, DESTINATION, SIGNATURE = 1, 3, 4, 5, 6, 8


def padded(content, to):
    """Filled up to a multiple."""
    return content + b"\0" * (-len(content) % to)


def string(value):
    """A text on the wire."""
    return struct.pack("<I", len(value)) + value.encode() + b"\0"


def header_field(code, kind, content):
    """One entry of a header."""
    return bytes((code, 1)) + kind + b"\0" + content


def message(serial, destination, path, method, texts=()):
    """A method call without an interface."""
    fields = b""
    for code, kind, value in (
        (PATH, b"o", path),
        (MEMBER, b"s", method),
        (DESTINATION, b"s", destination),
    ):
        fields = padded(fields, 8) + header_field(code, kind, string(value))
    body = b""
    if texts:
        signature = bytes((len(texts),)) + b"s" * len(texts) + b"\0"
        fields = padded(fields, 8) + header_field(SIGNATURE, b"g", signature)
        for value in texts:
            body = padded(body, 4) + string(value)
    start = struct.pack("<cBBBIII", b"l", CALL, 0, 1, len(body), serial, len(fields))
    return padded(start + fields, 8) + body


class Bus:
    """A connection, by the caller's own user."""

    def __init__(self, place):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(30)
        self.socket.connect(place)
        user = str(os.geteuid()).encode().hex()
        self.socket.sendall(f"\0AUTH EXTERNAL {user}\r\n".encode())
        line = self.socket.recv(200)
        assert line.startswith(b"OK "), line
        self.socket.sendall(b"BEGIN\r\n")
        bus = "org.freedesktop.DBus"
        self.socket.sendall(message(1, bus, "/org/freedesktop/DBus", "Hello"))
        assert self.reply(1) == "answered"

    def exactly(self, count):
        """So many bytes."""
        content = b""
        while len(content) < count:
            more = self.socket.recv(count - len(content))
            assert more, "the bus has closed the connection"
            content += more
        return content

    def reply(self, serial):
        """How the call of that number ended; what else comes is passed over."""
        while True:
            start = self.exactly(16)
            kind = start[1]
            body, _, fields = struct.unpack("<III", start[4:])
            header = self.exactly(fields + -fields % 8)
            self.exactly(body)
            answers_it = bytes((REPLY_TO, 1)) + b"u\0" + struct.pack("<I", serial) in header
            if kind == RETURN and answers_it:
                return "answered"
            if kind == ERROR and answers_it:
                at = header.index(bytes((ERROR_NAME, 1)) + b"s\0") + 4
                (length,) = struct.unpack_from("<I", header, at)
                return header[at + 4 : at + 4 + length].decode()


def main():
    """Makes the call that the command line describes."""
    place, destination, path, method, *texts = sys.argv[1:]
    bus = Bus(place)
    bus.socket.sendall(message(2, destination, path, method, texts))
    print(bus.reply(2))


if __name__ == "__main__":
    main()
