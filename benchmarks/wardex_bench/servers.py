"""Private servers of a measurement; all end with their block."""

import contextlib
import socket
import subprocess
import time
from pathlib import Path
from typing import Callable, Iterator, Sequence

from wardex_bench import processes
from wardex_bench.processes import Word
from wardex_bench.row import Context, Unmeasured

START_SECONDS = 10.0
POLL_SECONDS = 0.01

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={address}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow send_requested_reply="true"/>
  </policy>
</busconfig>
"""


def wait_until(condition: Callable[[], bool], what: str, bound: float = START_SECONDS) -> None:
    """Asks until the condition holds; raises Unmeasured when it does not within the bound."""
    end = time.monotonic() + bound
    while not condition():
        if time.monotonic() > end:
            raise Unmeasured(f"{what}: not within {bound:g} s")
        time.sleep(POLL_SECONDS)


def accepts(path: Path) -> bool:
    """Whether somebody listens on a Unix socket."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
        try:
            client.connect(str(path))
        except OSError:
            return False
    return True


@contextlib.contextmanager
def server(
    context: Context, command: Sequence[Word], is_ready: Callable[[], bool]
) -> Iterator["subprocess.Popen[str]"]:
    """Any server, from when it is ready until the end of the block."""
    words = context.scratch / f"{Path(command[0]).name}.out"
    with processes.running(command, words) as process:

        def answers() -> bool:
            if process.poll() is not None:
                said = words.read_text(errors="replace").strip()
                raise Unmeasured(f"{command[0]} ended with {process.returncode}: {said}")
            return is_ready()

        wait_until(answers, f"{command[0]} starts")
        yield process


@contextlib.contextmanager
def redis_server(context: Context, name: str = "redis") -> Iterator[Path]:
    """A Redis server of ours without files; answers its socket."""
    path = context.scratch / f"{name}.sock"
    options = ("--port", "0", "--save", "", "--appendonly", "no", "--daemonize", "no")
    command = ("redis-server", *options, "--unixsocket", path, "--dir", context.scratch)
    with server(context, command, lambda: accepts(path)):
        yield path
    path.unlink(missing_ok=True)


@contextlib.contextmanager
def bus(context: Context) -> Iterator[str]:
    """A message bus of ours that allows everything; answers its address."""
    path = context.scratch / "bus.sock"
    configuration = context.scratch / "bus.conf"
    configuration.write_text(BUS_CONFIGURATION.format(address=path), encoding="utf-8")
    command = ("dbus-daemon", "--nofork", "--nopidfile", f"--config-file={configuration}")
    with server(context, command, lambda: accepts(path)):
        yield f"unix:path={path}"
    path.unlink(missing_ok=True)
