"""The bus from below, for programs that do to it what no library would. Used inside the box only."""

import os
import socket
import struct

from wardex_desk.places import BUS_SOCKET

METHOD_CALL = 1
NO_REPLY_EXPECTED = 1
PATH, INTERFACE, MEMBER, DESTINATION, SIGNATURE = 1, 2, 3, 6, 8
BUS = "org.freedesktop.DBus"
SUPERVISOR = "com.orvo.wardex"


def _text(value: str) -> bytes:
    return struct.pack("<I", len(value)) + value.encode() + b"\0"


def _field(code: int, kind: str, value: bytes) -> bytes:
    return struct.pack("<BB2s", code, 1, kind.encode() + b"\0") + value


def call(destination: str, member: str, text: str = "", wants_answer: bool = True) -> bytes:
    """A method call with a text for its argument, or with none, as it goes over the wire.

    The interface has the destination's name. RequestName gets its flags, too: none.
    """
    path = "/" + BUS.replace(".", "/") if destination == BUS else "/"
    fields = [
        _field(PATH, "o", _text(path)),
        _field(INTERFACE, "s", _text(destination)),
        _field(MEMBER, "s", _text(member)),
        _field(DESTINATION, "s", _text(destination)),
    ]
    body = _text(text) if text else b""
    if member == "RequestName":
        fields.append(_field(SIGNATURE, "g", b"\x02su\0"))
        body += b"\0" * (-len(body) % 4) + struct.pack("<I", 0)
    elif text:
        fields.append(_field(SIGNATURE, "g", b"\x01s\0"))
    header = b""
    for field in fields:
        header += b"\0" * (-len(header) % 8) + field
    flags = 0 if wants_answer else NO_REPLY_EXPECTED
    fixed = struct.pack("<cBBBIII", b"l", METHOD_CALL, flags, 1, len(body), 1, len(header))
    return fixed + header + b"\0" * (-len(header) % 8) + body


def connect() -> socket.socket:
    """A connection to the system bus, ready to send."""
    bus = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    bus.connect(BUS_SOCKET)
    user = str(os.getuid()).encode().hex().encode()
    bus.sendall(b"\0AUTH EXTERNAL " + user + b"\r\n")
    bus.recv(4096)
    bus.sendall(b"BEGIN\r\n" + call(BUS, "Hello"))
    bus.recv(4096)
    return bus
