"""How the desk asks the device's boot program for a deed: one JSON object each way on a socket."""

import json
import socket
import struct
from typing import Any

from wardex_desk.instance import Instance
from wardex_desk.places import CONTROL_SOCKET

CREDENTIALS = struct.Struct("3i")


class ControlError(Exception):
    """The device did not do it; the message says why."""


class WentDown(ControlError):
    """The device rebooted or was switched off before it answered."""


def _connect(instance: Instance, timeout: float) -> socket.socket:
    connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    connection.settimeout(timeout)
    try:
        with instance.socket_address(CONTROL_SOCKET) as address:
            connection.connect(address)
    except OSError as error:
        connection.close()
        raise ControlError(
            f"no device '{instance.name}' is running (start it with ./run)"
        ) from error
    return connection


def ask(instance: Instance, timeout: float = 30.0, **request: Any) -> dict[str, Any]:
    """Sends a request and waits for its answer, for at most `timeout` seconds.

    Raises ControlError when no device answers or when it refuses.
    """
    with _connect(instance, timeout) as connection:
        try:
            connection.sendall(json.dumps(request).encode() + b"\n")
            line = connection.makefile("rb").readline()
        except ConnectionError as error:
            raise WentDown("the device went down before it answered") from error
        except OSError as error:
            raise ControlError(f"the device did not answer: {error}") from error
    if not line:
        raise WentDown("the device went down before it answered")
    answer: dict[str, Any] = json.loads(line)
    if "error" in answer:
        raise ControlError(str(answer["error"]))
    return answer


def boot_program(instance: Instance) -> int:
    """Process id, as seen from here, of the program that runs the device."""
    with _connect(instance, 5.0) as connection:
        raw = connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, CREDENTIALS.size)
        return int(CREDENTIALS.unpack(raw)[0])
