"""What runs on the device besides the supervisor and its services; used inside the box only."""

import os
import signal
import socket
import subprocess
import threading
from typing import Callable, Optional, Sequence

from wardex_desk.places import (
    BUS_SOCKET,
    CACHE_SOCKET,
    DESK,
    LOGS,
    STORE_SOCKET,
    SYSLOG_SOCKET,
)
from wardex_desk.redis_client import RedisClient, RedisError
from wardex_desk.waiting import now, poll

START_BOUND = 10.0
STOP_BOUND = 5.0


class PeripheralError(Exception):
    """A deed that failed; the message names the program."""


def background(words: Sequence[str], log: str) -> "subprocess.Popen[bytes]":
    """Starts a program without a terminal, its words going to a file in /log."""
    with open(f"{LOGS}/{log}", "ab") as output:
        return subprocess.Popen(
            words, stdin=subprocess.DEVNULL, stdout=output, stderr=output, start_new_session=True
        )


class Server:
    """A server with a Unix socket, in a process of its own.

    Threads: any; deeds on one server come one after the other.
    Errors:  PeripheralError when it does not come up or go down within its bound (seconds).
    """

    def __init__(
        self, name: str, words: Sequence[str], address: str, answers: Callable[[str], bool]
    ) -> None:
        self.name = name
        self._words = tuple(words)
        self._address = address
        self._answers = answers
        self._process: Optional["subprocess.Popen[bytes]"] = None
        self._lock = threading.RLock()

    def launch(self) -> None:
        """Starts the process without waiting for its socket; nothing if it runs."""
        with self._lock:
            if self._process is None or self._process.poll() is not None:
                self._forget_socket()
                self._process = background(self._words, f"{self.name}.out")

    def await_ready(self) -> None:
        """Waits until somebody answers at the socket."""
        if (
            not poll(lambda: self._answers(self._address) or self._ended(), START_BOUND, 0.002)
            or self._ended()
        ):
            raise PeripheralError(f"{self.name} does not come up: see /log/{self.name}.out")

    def start(self) -> None:
        """Starts the server and waits until it can be used."""
        with self._lock:
            self.launch()
            self.await_ready()

    def stop(self) -> None:
        """Ends the server and its socket, also when it hangs; nothing if it does not run."""
        with self._lock:
            if self._process is None:
                return
            self._process.kill()
            try:
                self._process.wait(STOP_BOUND)
            except subprocess.TimeoutExpired as error:
                raise PeripheralError(f"{self.name} does not end") from error
            self._process = None
            self._forget_socket()

    def restart(self) -> None:
        """Ends the server and starts a fresh one."""
        with self._lock:
            self.stop()
            self.start()

    def freeze(self) -> None:
        """Keeps the server from answering, from now on; its socket stays."""
        process = self._signal(signal.SIGSTOP)
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)

    def resume(self) -> None:
        """Lets a frozen server go on."""
        self._signal(signal.SIGCONT)

    def _signal(self, number: int) -> "subprocess.Popen[bytes]":
        with self._lock:
            if self._process is None or self._process.poll() is not None:
                raise PeripheralError(f"{self.name} is not running")
            self._process.send_signal(number)
            return self._process

    def _ended(self) -> bool:
        return self._process is None or self._process.poll() is not None

    def _forget_socket(self) -> None:
        if os.path.lexists(self._address):
            os.unlink(self._address)


def accepts(address: str) -> bool:
    """Whether somebody listens at this socket."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as probe:
        try:
            probe.connect(address)
        except OSError:
            return False
    return True


def serves_redis(address: str) -> bool:
    """Whether a Redis server answers there, done with loading what it has kept."""
    try:
        with RedisClient(address) as client:
            return client.command("PING") == b"PONG"
    except RedisError:
        return False


def servers() -> dict[str, Server]:
    """The device's servers by the name that the desk uses for them."""
    bus = (
        "dbus-daemon",
        "--config-file=/opt/orvo/etc/dbus-1/system.conf",
        "--nofork",
        "--nopidfile",
    )
    cache = ("redis-server", "/opt/orvo/etc/redis/cache.conf")
    store = ("redis-server", "/opt/orvo/etc/redis/store.conf")
    return {
        "bus": Server("dbus-daemon", bus, BUS_SOCKET, accepts),
        "redis-cache": Server("redis-cache", cache, CACHE_SOCKET, serves_redis),
        "redis-store": Server("redis-store", store, STORE_SOCKET, serves_redis),
    }


class Observers:
    """Programs that note what passes on the bus and on the channel of the log records."""

    WATCHED = {
        "bus": ("bus", f"{LOGS}/bus"),
        "redis-cache": ("records", CACHE_SOCKET, f"{LOGS}/records"),
    }

    def __init__(self) -> None:
        self._awaited: list[tuple[str, int]] = []

    def launch(self, server: str) -> None:
        """Starts the observer of one server, if it has one."""
        words = self.WATCHED.get(server)
        if words is not None:
            journal = words[-1]
            size = os.path.getsize(journal) if os.path.exists(journal) else 0
            self._awaited.append((journal, size))
            background((f"{DESK}/bin/device-observer", *words), f"observer-{words[0]}.out")

    def await_listening(self) -> None:
        """Waits until nothing that happens from now on can be missed."""
        for journal, size in self._awaited:
            if not poll(lambda: _grown(journal, size), START_BOUND, 0.002):
                raise PeripheralError(f"nobody observes: {journal} stays empty")
        self._awaited.clear()


def _grown(journal: str, size: int) -> bool:
    return os.path.exists(journal) and os.path.getsize(journal) > size


class Syslog:
    """The device's system log: datagrams at /dev/log, kept in /log/syslog with their time."""

    def __init__(self) -> None:
        if os.path.lexists(SYSLOG_SOCKET):
            os.unlink(SYSLOG_SOCKET)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(SYSLOG_SOCKET)
        os.chmod(SYSLOG_SOCKET, 0o666)

    def capture(self) -> None:
        """Writes down what arrives, for ever; runs in a thread of its own."""
        with open(f"{LOGS}/syslog", "ab", buffering=0) as journal:
            while True:
                datagram = self._socket.recv(65536)
                text = datagram.rstrip(b"\0\n").replace(b"\n", b"\\n")
                journal.write(b"%.6f %s\n" % (now(), text))
