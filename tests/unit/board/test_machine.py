"""How the emulator is watched: what ends a life, what ends a run, and that it outlives nobody."""

import json
import os
import signal
import socket
import subprocess
import sys
from pathlib import Path
from threading import Event, Thread

import pytest

from wardex_board import machine
from wardex_board.images import Images
from wardex_board.machine import OUT_OF_TIME, POWER_OFF, RESET, WATCHDOG, Plan
from wardex_board.qmp import QmpError
from wardex_desk.waiting import now, poll

BOUND_S = 20
GREETING = {"QMP": {"version": {}, "capabilities": []}}
BITES = {"event": "WATCHDOG", "data": {"action": "reset"}}
RESETS = {"event": "RESET", "data": {"guest": True, "reason": "guest-reset"}}
SLEEPS = ["sleep", "1000"]


def shuts_down(reason: str) -> dict:
    return {"event": "SHUTDOWN", "data": {"guest": True, "reason": reason}}


class Emulator(Thread):
    """Speaks as the emulator does on its socket; the process beside it only sleeps."""

    def __init__(self, path: Path, *words) -> None:
        super().__init__(daemon=True)
        self._words = words
        self.heard: list[str] = []
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(str(path))
        self._listener.listen()
        self.start()

    def run(self) -> None:
        connection, _ = self._listener.accept()
        with connection, connection.makefile("rw") as stream:
            for words in (GREETING, {"return": {}}, *self._words):
                text = words if isinstance(words, str) else json.dumps(words)
                stream.write(text + "\n")
            stream.flush()
            self.heard += [json.loads(line)["execute"] for line in stream]


def played(folder: Path, monkeypatch, words, lives=1, limit_s=BOUND_S, process=SLEEPS, over=None):
    """The run's ends, and what the emulator was told."""
    monkeypatch.setattr(machine, "command", lambda *_: process)
    monkeypatch.setattr(machine, "END_BOUND_S", 0.1)
    emulator = Emulator(folder / "qmp", *words)
    plan = Plan(eeproms={}, lives=lives, limit_s=limit_s)
    images = Images(folder, folder, folder)
    run = machine.play(folder, images, plan, lambda _: None, over or Event())
    emulator.join(BOUND_S)
    return run.ends, emulator.heard


@pytest.mark.parametrize(
    ("words", "ends"),
    [
        ([BITES, RESETS], [WATCHDOG]),
        ([RESETS], [RESET]),
        ([BITES, RESETS, RESETS], [WATCHDOG, RESET]),
        ([RESETS, BITES, RESETS], [RESET, WATCHDOG]),
        ([shuts_down("guest-shutdown")], [POWER_OFF]),
        ([RESETS, shuts_down("guest-shutdown")], [RESET, POWER_OFF]),
        ([shuts_down("guest-panic")], ["shutdown by guest-panic"]),
        ([shuts_down("host-signal")], ["shutdown by host-signal"]),
        ([{"event": "SHUTDOWN"}], ["shutdown by no reason"]),
        ([{"event": "RESET", "data": {"reason": "host-qmp"}}], ["reset by host-qmp"]),
        ([{"event": "RTC_CHANGE", "data": {}}, RESETS], [RESET]),
    ],
)
def test_life_ends_as_the_emulator_says(tmp_path, monkeypatch, words, ends):
    found, heard = played(tmp_path, monkeypatch, words, lives=len(ends))
    assert found == ends
    assert heard == ["qmp_capabilities", "quit"]


def test_board_that_is_switched_off_has_no_further_lives(tmp_path, monkeypatch):
    found, _ = played(tmp_path, monkeypatch, [shuts_down("guest-shutdown"), RESETS], lives=3)
    assert found == [POWER_OFF]


def test_run_ends_at_its_limit(tmp_path, monkeypatch):
    begin = now()
    found, heard = played(tmp_path, monkeypatch, [RESETS], lives=2, limit_s=0.5)
    assert found == [RESET, OUT_OF_TIME]
    assert heard[-1] == "quit" and 0.5 <= now() - begin < BOUND_S


def test_run_ends_when_it_is_called_off(tmp_path, monkeypatch):
    over = Event()
    over.set()
    assert played(tmp_path, monkeypatch, [], over=over)[0] == []


def test_emulator_that_does_not_follow_the_order_to_quit_is_killed(tmp_path, monkeypatch):
    pid = tmp_path / "pid"
    sleeps = [
        "sh",
        "-c",
        f"echo $$ >{pid}.new; mv {pid}.new {pid}; exec sleep 1000",
    ]
    monkeypatch.setattr(machine, "LOOK_S", 0.01)
    assert played(tmp_path, monkeypatch, [], limit_s=1, process=sleeps)[0] == [OUT_OF_TIME]
    assert not Path("/proc", pid.read_text().strip()).exists()


@pytest.mark.parametrize("words", ["no JSON", "[1]"])
def test_emulator_that_talks_nonsense_fails_the_run(tmp_path, monkeypatch, words):
    with pytest.raises(QmpError, match="the emulator says"):
        played(tmp_path, monkeypatch, [words])


def test_emulator_that_ends_by_itself_fails_the_run(tmp_path, monkeypatch):
    with pytest.raises(QmpError, match="ended by itself"):
        played(tmp_path, monkeypatch, [], process=["true"])


def test_emulator_that_cannot_be_reached_fails_the_run(tmp_path, monkeypatch):
    monkeypatch.setattr("wardex_board.qmp.CONNECT_BOUND_S", 0.1)
    monkeypatch.setattr(machine, "command", lambda *_: SLEEPS)
    images = Images(tmp_path, tmp_path, tmp_path)
    with pytest.raises(QmpError, match="does not listen"):
        machine.play(tmp_path, images, Plan(eeproms={}), lambda _: None, Event())


def test_emulator_does_not_outlive_the_command(tmp_path):
    """The very line that starts it, with a sleep in the emulator's place."""
    plan = Plan(eeproms={})
    line = machine.command(tmp_path, Images(tmp_path, tmp_path, tmp_path), plan, "null")
    guard = line[: line.index("qemu-system-arm")]
    starter = (
        "import subprocess, sys; "
        f"print(subprocess.Popen({[*guard, *SLEEPS]!r}).pid, flush=True); "
        "sys.stdin.read()"
    )
    command = subprocess.Popen(
        [sys.executable, "-c", starter], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
    )
    with command:
        pid = int(command.stdout.readline())
        sleeps = Path(f"/proc/{pid}/comm")
        assert poll(lambda: sleeps.read_text() == "sleep\n", BOUND_S)
        command.send_signal(signal.SIGKILL)
        command.wait()

    def gone() -> bool:
        try:
            return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] == "Z"
        except FileNotFoundError:
            return True

    if not poll(gone, BOUND_S):
        os.kill(pid, signal.SIGKILL)
        pytest.fail("it lives on")
