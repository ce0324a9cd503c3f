"""What a person is told while the device's programs are built."""

import io

import pytest

from wardex_desk import building
from wardex_desk.building import BuildError

FIRST_TIME = "Building (dev), which takes minutes the first time ..."


class Terminal(io.StringIO):
    """A stream that is somebody's terminal."""

    def isatty(self):
        return True


@pytest.fixture
def build(tmp_path, monkeypatch):
    """Calls the build with a script in cmake's place, in a tree without any build."""
    (tmp_path / "bin").mkdir()
    monkeypatch.setenv("PATH", f"{tmp_path}/bin:/usr/bin:/bin")
    monkeypatch.setattr(building, "REPOSITORY", tmp_path)

    def call(script, stream):
        cmake = tmp_path / "bin/cmake"
        cmake.write_text(f"#!/bin/sh\n{script}\n")
        cmake.chmod(0o755)
        building.programs("dev", None, stream)
        return stream.getvalue()

    return call


def test_terminal_shows_how_far_the_build_is(build):
    told = build('[ "$1" = --preset ] || printf "[1/2] one\\n[2/2] two\\n"', Terminal())
    assert told.startswith(f"{FIRST_TIME}\r{FIRST_TIME} 1 of 2\r{FIRST_TIME} 2 of 2 done in ")


def test_file_gets_one_line(build, tmp_path):
    told = build("echo '[1/1] one'; echo word >&2", io.StringIO())
    assert told.startswith(f"{FIRST_TIME} done in ")
    assert told.count("\n") == 1
    log = (tmp_path / "build/dev/run-build.log").read_text()
    assert log == "[1/1] one\nword\n" * 2


def test_build_after_the_first_is_not_called_long(build, tmp_path):
    (tmp_path / "build/dev/bin").mkdir(parents=True)
    assert build("true", io.StringIO()).startswith("Building (dev) ... done in ")


def test_failure_is_told_with_its_last_words(build, tmp_path):
    stream = io.StringIO()
    with pytest.raises(BuildError) as failure:
        build("echo no such thing; exit 1", stream)
    log = tmp_path / "build/dev/run-build.log"
    assert str(failure.value) == f"no such thing\nthe build failed, see {log}"
    assert stream.getvalue() == f"{FIRST_TIME} failed\n"
