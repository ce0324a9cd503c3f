"""A measurement that is ended in the middle leaves nothing behind."""

import os
import signal
import subprocess
import sys
from pathlib import Path

import pytest

from wardex_bench.servers import accepts, wait_until

# The command with one row, which starts a server and a program and then takes for ever.
COMMAND = """
import pathlib, sys
from wardex_bench import building, cli, processes, rows, servers
from wardex_bench.row import Result, Row

def measure(context):
    with servers.redis_server(context) as socket:
        pathlib.Path(sys.argv[1]).write_text(f"{socket}\\n")
        processes.run(("sh", "-c", "while :; do read -r _ </dev/zero; done"))
    return Result(1.0)

building.build = lambda: None
rows.ALL = [Row("endless", "s", None, measure)]
sys.exit(cli.main([]))
"""


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_ended_command_takes_servers_sockets_and_folders_with_it(tmp_path, number):
    note = tmp_path / "note"
    environment = {**os.environ, "TMPDIR": str(tmp_path), "PYTHONDONTWRITEBYTECODE": "1"}
    words = [sys.executable, "-c", COMMAND, str(note)]
    with subprocess.Popen(
        words, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
    ) as bench:
        wait_until(lambda: note.is_file() and note.read_text().endswith("\n"), "the row runs")
        socket = Path(note.read_text().strip())
        assert accepts(socket)
        bench.send_signal(number)
        _, errors = bench.communicate(timeout=20)
    assert bench.returncode == 128 + number
    assert errors.endswith(f"bench: ended by signal {number.value}\n")
    assert "Traceback" not in errors
    assert not socket.parent.exists()
    assert [path.name for path in tmp_path.iterdir()] == ["note"]
    left = [path for path in Path("/proc").glob("[0-9]*/cmdline") if mentions(path, tmp_path)]
    assert left == []


def mentions(path, folder):
    """Whether a process has the folder in its words."""
    try:
        return str(folder).encode() in path.read_bytes()
    except OSError:
        return False
