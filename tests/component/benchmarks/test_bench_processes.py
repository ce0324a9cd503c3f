"""Programs of a measurement end with it, whatever happens."""

import os
import time
from pathlib import Path

import pytest

from wardex_bench import processes
from wardex_bench.row import Unmeasured
from wardex_bench.servers import wait_until

FOREVER = "while :; do read -r _ </dev/zero; done"


def is_gone(number):
    """Whether a process has ended; one that waits for its parent to look has."""
    try:
        return Path(f"/proc/{number}/stat").read_text().rpartition(")")[2].split()[0] == "Z"
    except (FileNotFoundError, ProcessLookupError):
        return True


def noted(path):
    """The process number that a program wrote to a file."""
    wait_until(lambda: path.is_file() and path.read_text().endswith("\n"), f"{path} is written")
    return int(path.read_text())


def test_run_answers_what_the_program_wrote():
    assert processes.run(("sh", "-c", "echo figure; echo aside >&2")) == "figure\n"


def test_run_that_fails_tells_status_and_last_words():
    with pytest.raises(Unmeasured) as refusal:
        processes.run(("sh", "-c", "seq 1 20; echo lost >&2; exit 3"))
    said = str(refusal.value)
    assert said.startswith("sh ended with 3: ")
    assert said.endswith("19\n20\nlost") and "\n11\n" not in said


def test_run_of_a_program_that_is_not_there_fails():
    with pytest.raises(Unmeasured, match="no-such-program"):
        processes.run(("no-such-program",))


def test_run_that_takes_too_long_is_ended_with_its_children(tmp_path):
    child = tmp_path / "child"
    words = f"sh -c 'echo $$ >{child}; {FOREVER}' & {FOREVER}"
    with pytest.raises(Unmeasured, match="sh did not end within 0.5 s"):
        processes.run(("sh", "-c", words), timeout=0.5)
    number = noted(child)
    wait_until(lambda: is_gone(number), "the child ends")


def test_run_gives_the_environment():
    assert processes.run(("/bin/sh", "-c", "echo $WORD"), {"WORD": "given"}) == "given\n"


def test_running_program_ends_with_the_block_and_its_children_too(tmp_path):
    child = tmp_path / "child"
    words = f"sh -c 'echo $$ >{child}; {FOREVER}' & {FOREVER}"
    with processes.running(("sh", "-c", words)) as process:
        number = noted(child)
        assert process.poll() is None
    assert process.returncode is not None
    wait_until(lambda: is_gone(number), "the child ends")


def test_running_program_ends_even_when_the_block_fails():
    with pytest.raises(KeyError):
        with processes.running(("sh", "-c", FOREVER)) as process:
            raise KeyError("anything")
    assert process.returncode is not None


def test_stubborn_program_is_killed(tmp_path):
    ready = tmp_path / "ready"
    process = processes.start(("sh", "-c", f"trap '' TERM; echo $$ >{ready}; {FOREVER}"))
    noted(ready)
    begin = time.monotonic()
    processes.end(process, patience=0.1)
    assert process.returncode is not None
    assert time.monotonic() - begin < 5


def test_what_a_background_program_says_goes_to_its_file(tmp_path):
    with processes.running(("sh", "-c", "echo out; echo err >&2"), tmp_path / "said") as process:
        process.wait()
    assert (tmp_path / "said").read_text() == "out\nerr\n"


def test_programs_die_with_a_measurement_that_is_killed(tmp_path):
    child = tmp_path / "child"
    parent = os.fork()
    if parent == 0:
        try:
            processes.run(("sh", "-c", f"echo $$ >{child}; {FOREVER}"))
        finally:
            os._exit(1)
    number = noted(child)
    os.kill(parent, 9)
    os.waitpid(parent, 0)
    wait_until(lambda: is_gone(number), "the child ends")
