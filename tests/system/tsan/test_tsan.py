"""A whole life of the supervisor as built with the thread sanitizer: no race of ours."""

import os
from pathlib import Path

import pytest
from whole_run import live

SUPPRESSIONS = Path(__file__).parent / "tsan.supp"
OPTIONS = "suppressions=/etc/tsan.supp log_path=/log/tsan history_size=7"


@pytest.fixture
def watched(put_on_desk):
    """Makes and boots cameras whose supervisor watches its own threads."""
    built = Path(os.environ["WARDEX_BIN"])
    if b"__tsan_init" not in (built / "wardex").read_bytes():
        pytest.skip("this build has no thread sanitizer")

    def make():
        camera = put_on_desk(watchdog_ms=60_000, environment={"TSAN_OPTIONS": OPTIONS})
        camera.instance.write("/etc/tsan.supp", SUPPRESSIONS.read_text(encoding="utf-8"))
        camera.bound = 120.0
        camera.power_on()
        return camera

    return make


def reports(camera):
    """What the sanitizer told."""
    return "".join(path.read_text("utf-8") for path in camera.instance.path("/log").glob("tsan.*"))


def test_supervisor_has_no_race_in_its_life(watched):
    camera = watched()
    live(camera)
    camera.run("kill", "-TERM", str(camera.process()))
    status = camera.await_end()
    told = reports(camera)
    assert "WARNING: ThreadSanitizer" not in told, told[:20000]
    assert status == 128 + 15
