"""./run logs on a device that is up, from another process."""

import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

import pytest

from wardex_desk.waiting import poll

BOUND = 20.0
DOCUMENT = Path(__file__).resolve().parents[3] / "docs/logging.md"


def run(home, *words):
    """The command's words, for a process of its own."""
    return [sys.executable, "-m", "wardex_desk", "--home", str(home), "logs", *words]


def logs(home, *words):
    """Runs the command to its end: its exit status, what it prints, and what it complains about."""
    outcome = subprocess.run(run(home, *words), capture_output=True, text=True, timeout=BOUND)
    return outcome.returncode, outcome.stdout.splitlines(), outcome.stderr.splitlines()


def documented():
    """The words of each ./run logs that the document shows, as lists for parametrize."""
    commands = re.findall(r"^\./run logs\b.*$", DOCUMENT.read_text("utf-8"), re.MULTILINE)
    return [pytest.param(shlex.split(command)[2:], id=command) for command in commands]


def record(text, level="WARN", time="1.0000"):
    return f'{{"T":"{time}", "P":"7", "C":"{level}", "S":"test", "M":"{text}"}}'


def push(camera, *records):
    """Writes records as a program on the device does."""
    with camera.connect_redis() as cache:
        for each in records:
            cache.command("RPUSH", "LOG:ENTRIES", each)


@pytest.fixture
def follower(home):
    """Starts ./run logs -f; answers the process and a function for its lines so far."""
    started = []

    def start(*words):
        place = home / f"followed{len(started)}"
        with open(place, "wb") as output:
            process = subprocess.Popen(run(home, "-f", *words), stdout=output, stderr=output)
        started.append(process)
        return process, lambda: place.read_text().splitlines()

    yield start
    for process in started:
        process.kill()
        process.wait()


def of_test(lines):
    """The messages of the records that the test wrote."""
    return [line.split("test[7] ")[1] for line in lines if "test[7] " in line]


def test_logs_prints_the_stored_records(camera, home):
    push(camera, record("Bello"))
    assert logs(home) == (0, ["      1.0000 WARN  test[7] Bello"], [])


def test_record_that_was_cut_is_shown_with_its_gap(camera, home):
    push(camera, record("Bello is d")[:-2] + "\0")
    assert logs(home)[1] == ["      1.0000 WARN  test[7] Bello is d..."]


def test_bytes_that_a_terminal_obeys_are_not_printed(camera, home):
    push(camera, "\033[2Jno record")
    assert logs(home)[1] == ["?? #[2Jno record"]


def test_level_shows_this_one_and_worse(camera, home):
    push(camera, *(record(level, level) for level in ("INFO", "WARN", "ERROR")))
    assert of_test(logs(home, "--level", "warn")[1]) == ["WARN", "ERROR"]


def test_text_is_searched_as_people_read_it(camera, home):
    push(camera, record(r"no \"\/etc\/init.d\" here"), record("etc"))
    assert of_test(logs(home, "-g", '"/etc/init.d"')[1]) == ['no "/etc/init.d" here']


@pytest.mark.parametrize("text", ["' or true or '", "]]", "\\", "%", "') --", '"'])
def test_hostile_text_is_a_text(camera, home, text):
    push(camera, record("Bello"))
    assert logs(home, "-g", text) == (0, [], [])


def test_level_and_text_must_both_fit(camera, home):
    push(camera, record("door"), record("door 2", "ERROR"), record("laser", "ERROR"))
    assert of_test(logs(home, "--level=ERROR", "-g", "door")[1]) == ["door 2"]


def test_text_that_is_too_long_is_refused(camera, home):
    status, _, complaints = logs(home, "-g", "/" * 1000)
    assert (status, complaints) == (
        2,
        ["record-reader: the text is too long to be searched for: take a part of it"],
    )


def test_dead_redis_is_told_with_what_to_do(camera, home):
    camera.redis("stop")
    assert logs(home) == (
        1,
        [],
        [
            "record-reader: Redis does not answer: No such file or directory",
            "run: no stored records (./run do redis start)",
        ],
    )


def test_reading_writes_no_record(camera, home):
    push(camera, record("Bello"))
    logs(home)
    with camera.connect_redis() as cache:
        assert cache.command("LLEN", "LOG:ENTRIES") == 1


@pytest.mark.parametrize("words", documented())
def test_documented_command_shows_records(camera, home, follower, words):
    push(camera, record("com.orvo.pictor is dead", "ERROR"))
    if "-f" in words:
        _, lines = follower(*(word for word in words if word != "-f"))
        assert poll(lambda: of_test(lines()) == ["com.orvo.pictor is dead"], BOUND)
    else:
        assert of_test(logs(home, *words)[1]) == ["com.orvo.pictor is dead"]


def test_document_shows_commands():
    assert len(documented()) == 4


def test_following_shows_each_record_once(camera, home, follower):
    push(camera, record("0"))
    _, lines = follower()
    assert poll(lambda: of_test(lines()) == ["0"], BOUND)
    for number in range(1, 200):
        push(camera, record(number, time=f"{number}.0000"))
    assert poll(lambda: len(lines()) == 200, BOUND)
    assert of_test(lines()) == [str(number) for number in range(200)]


def test_following_goes_on_after_a_restart_of_redis(camera, home, follower):
    _, lines = follower("-g", "door")
    push(camera, record("door 1"))
    assert poll(lambda: of_test(lines()) == ["door 1"], BOUND)
    camera.redis("restart")
    push(camera, record("laser"), record("door 2"))
    assert poll(lambda: of_test(lines()) == ["door 1", "door 2"], BOUND)


def test_following_goes_on_after_a_reboot_and_ends_with_the_device(camera, home, follower):
    process, lines = follower()
    push(camera, record("before"))
    assert poll(lambda: of_test(lines()) == ["before"], BOUND)
    camera.reboot()
    camera.wait_for(lambda: len(camera.lines("boots")) == 2, BOUND, "the second boot")
    camera.wait_for(camera.is_up, BOUND, "a device that is up")
    push(camera, record("after"))
    assert poll(lambda: of_test(lines()) == ["before", "after"], BOUND)
    camera.power_off()
    assert process.wait(BOUND) == 0


def test_reader_on_the_device_goes_with_the_command(camera, home, follower):
    process, lines = follower()
    push(camera, record("Bello"))
    assert poll(lambda: of_test(lines()) == ["Bello"], BOUND)
    assert "record-reader" in camera.run("ps", "-e")[1]
    process.terminate()
    assert process.wait(BOUND) == 128 + 15
    assert poll(lambda: "record-reader" not in camera.run("ps", "-e")[1], BOUND)


def test_reader_that_goes_early_is_no_accident(camera, home):
    push(camera, *(record(number) for number in range(2000)))
    reader, writer = os.pipe()
    os.close(reader)
    process = subprocess.Popen(run(home), stdout=writer, stderr=subprocess.PIPE, text=True)
    os.close(writer)
    assert (process.communicate(timeout=BOUND)[1], process.returncode) == ("", 1)
