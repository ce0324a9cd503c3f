"""The device's boot program, the first program inside the box.

It brings the device up in the order of a real one, obeys the desk over the control socket, and
ends with a status (ENDED_...) that says why the device went down. Everything else in the box ends
with it.
"""

import json
import os
import signal
import socket
import subprocess
import sys
import threading
from pathlib import Path
from typing import Any, Optional

from wardex_desk.peripherals import (
    Observers,
    PeripheralError,
    Server,
    Syslog,
    servers,
)
from wardex_desk.places import (
    BOOT_PLAN,
    CONTROL_SOCKET,
    DESK,
    ENDED_POWER_OFF,
    ENDED_REFUSED,
    ENDED_WATCHDOG,
    ENDINGS,
    LOGS,
    PACKAGE_SCRIPT,
    PANIC_SETTING,
    POWER_SWITCH,
    PROGRAMS,
    STORE_SOCKET,
    UP_MARK,
    WATCHDOG_NODE,
)
from wardex_desk.redis_client import RedisClient, RedisError
from wardex_desk.waiting import poll

# From the reboot command to the end. As on a real device everything goes on meanwhile, so that a
# supervisor that still feeds the watchdog is found out.
SHUTDOWN_S = 1.5
# How long a supervisor may take to be listed, in seconds; one that ends at once never is.
LISTED_BOUND = 2.0
PERMANENT_CONFIGURATION = "LOG:PERM:CFG"
SIGNALS = {"kill": signal.SIGKILL, "stop": signal.SIGSTOP, "continue": signal.SIGCONT}


def panic_setting_is_masked(mounts: str) -> bool:
    """Whether this text of /proc/self/mountinfo has a file of its own over the panic setting.

    The setting belongs to the whole machine: the supervisor would change the host's.
    """
    for line in mounts.splitlines():
        fields, _, source = line.partition(" - ")
        if fields.split()[4] == PANIC_SETTING:
            return not source.startswith("proc ")
    return False


def panic_setting_can_be_written() -> bool:
    """Whether this process could change it; nothing is changed by asking."""
    try:
        os.close(os.open(PANIC_SETTING, os.O_WRONLY))
    except OSError:
        return False
    return True


class Boot:
    """Brings one device up and keeps it until it goes down."""

    def __init__(self, plan: dict[str, Any]) -> None:
        self._plan = plan
        self._without = set(plan["without"])
        self._servers: dict[str, Server] = {
            name: server for name, server in servers().items() if name not in self._without
        }
        self._observers = Observers()
        self._guard: Optional["subprocess.Popen[bytes]"] = None
        os.mkfifo(POWER_SWITCH)
        self._switch = open(os.open(POWER_SWITCH, os.O_RDWR), encoding="ascii")

    def run(self) -> int:
        """Boots and answers the status to end with, when that time has come."""
        _thread(Syslog().capture)
        for server in self._servers.values():
            server.launch()
        for name, server in self._servers.items():
            server.await_ready()
            if "observers" not in self._without:
                self._observers.launch(name)
        self._store_log_configuration()
        self._observers.await_listening()
        _thread(self._obey, self._control_socket())
        if "services" not in self._without:
            subprocess.run((PACKAGE_SCRIPT, "start"), stdin=subprocess.DEVNULL)
        if "supervisor" not in self._without:
            self.start_supervisor()
        Path(UP_MARK).touch()
        return self._await_ending()

    def _await_ending(self) -> int:
        for line in self._switch:
            word = line.strip()
            if word == "reboot":
                threading.Timer(SHUTDOWN_S, _switch, ("down",)).start()
            elif word in ENDINGS:
                return ENDINGS[word]
        return ENDED_POWER_OFF

    def start_supervisor(self) -> None:
        """Starts the daemon under the hardware watchdog."""
        words = [f"{PROGRAMS}/wardex", *self._plan["arguments"]]
        hardware = [
            f"{DESK}/bin/watchdog-guard",
            *("--device", WATCHDOG_NODE),
            *("--timeout-ms", str(self._plan["watchdog_ms"])),
            *("--journal", f"{LOGS}/watchdog"),
        ]
        with open(f"{LOGS}/wardex.out", "ab") as output, open(f"{LOGS}/wardex.err", "ab") as errors:
            self._guard = subprocess.Popen(
                [*hardware, "--", *words],
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=errors,
                start_new_session=True,
                env={**os.environ, **self._plan["environment"]},
            )
        guard = self._guard
        poll(lambda: _listed("wardex") or guard.poll() is not None, LISTED_BOUND, 0.005)
        _thread(self._await_guard, guard)

    def _await_guard(self, guard: "subprocess.Popen[bytes]") -> None:
        # A supervisor may end with the same number: the watchdog's journal tells the two apart.
        if guard.wait() == ENDED_WATCHDOG and _last_word(f"{LOGS}/watchdog") == "reset":
            _switch("reset")

    def _store_log_configuration(self) -> None:
        if "redis-store" in self._servers:
            with RedisClient(STORE_SOCKET) as store:
                for field, text in self._plan["stored_log_configuration"].items():
                    store.command("HSETNX", PERMANENT_CONFIGURATION, field, text)

    def _control_socket(self) -> socket.socket:
        listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        listener.bind(CONTROL_SOCKET)
        listener.listen()
        return listener

    def _obey(self, listener: socket.socket) -> None:
        while True:
            connection, _ = listener.accept()
            _thread(self._serve, connection)

    def _serve(self, connection: socket.socket) -> None:
        with connection, connection.makefile("rwb") as stream:
            line = stream.readline()
            if not line:
                return
            try:
                answer = self.obey(json.loads(line))
            except (PeripheralError, OSError, KeyError, ValueError) as error:
                answer = {"error": str(error)}
            try:
                stream.write(json.dumps(answer).encode() + b"\n")
                stream.flush()
            except OSError:
                pass

    def obey(self, request: dict[str, Any]) -> dict[str, Any]:
        """Does what the desk asks for: the request's "deed", and what that deed needs."""
        deed = request["deed"]
        if deed == "server":
            self._server_deed(request["server"], request["action"])
        elif deed == "signal":
            _signal_all(request["program"], SIGNALS[request["action"]])
        elif deed == "start-supervisor":
            self.start_supervisor()
        elif deed == "run":
            return _run(request["words"], float(request["bound"]))
        elif deed == "power-off":
            _switch("off")
        else:
            raise ValueError(f"no deed is called '{deed}'")
        return {}

    def _server_deed(self, name: str, action: str) -> None:
        if name not in self._servers:
            self._servers[name] = servers()[name]
        server = self._servers[name]
        deeds = {
            "start": server.start,
            "stop": server.stop,
            "restart": server.restart,
            "hang": server.freeze,
            "continue": server.resume,
        }
        deeds[action]()


def _thread(work: Any, *arguments: Any) -> None:
    threading.Thread(target=work, args=arguments, daemon=True).start()


def _switch(word: str) -> None:
    Path(POWER_SWITCH).write_text(f"{word}\n", encoding="ascii")


def _last_word(journal: str) -> str:
    lines = Path(journal).read_text(encoding="utf-8").splitlines()
    return lines[-1].split()[-1] if lines else ""


def _listed(program: str) -> list[int]:
    """Every process of this name, as `ps` on the device shows it."""
    found = []
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            if (folder / "comm").read_text().strip() == program:
                found.append(int(folder.name))
        except (FileNotFoundError, ProcessLookupError):
            continue
    return found


def _signal_all(program: str, number: int) -> None:
    processes = _listed(program)
    if not processes:
        raise PeripheralError(f"{program} is not running")
    for process in processes:
        os.kill(process, number)


def _run(words: list[str], bound: float) -> dict[str, Any]:
    """Runs a program on the device; its output in full, at most `bound` seconds long."""
    try:
        outcome = subprocess.run(
            words,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            timeout=bound,
            start_new_session=True,
        )
    except subprocess.TimeoutExpired as error:
        raise PeripheralError(f"{words[0]} did not end within {bound:g} s") from error
    return {"status": outcome.returncode, "output": outcome.stdout.decode(errors="replace")}


def main() -> int:
    """Boots the device by its plan; refuses where the host's panic setting could be changed."""
    mounts = Path("/proc/self/mountinfo").read_text(encoding="utf-8")
    if not panic_setting_is_masked(mounts) and panic_setting_can_be_written():
        print(f"refusing to boot: {PANIC_SETTING} is the host's own", file=sys.stderr)
        return ENDED_REFUSED
    plan = json.loads(Path(BOOT_PLAN).read_text(encoding="utf-8"))
    try:
        return Boot(plan).run()
    except (PeripheralError, RedisError) as error:
        print(f"cannot boot: {error}", file=sys.stderr)
        return ENDED_REFUSED


if __name__ == "__main__":
    # Straight out: threads that wait for ever must not hold up a device that goes down.
    status = main()
    sys.stderr.flush()
    os._exit(status)
