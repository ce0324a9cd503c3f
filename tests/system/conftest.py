"""Cameras for the claims: in a folder of the claim's own, switched off at its end."""

import os
import shutil
import tempfile
from pathlib import Path

import pytest
from camera import Camera
from screen import Screen

from wardex_desk.box import BoxError, Programs
from wardex_desk.firmware import Plan
from wardex_desk.instance import Instance
from wardex_desk.namespace_box import NamespaceBox

# By themselves, under words of their own of ./check.
collect_ignore = ["memcheck", "soak", "tsan"]

JOURNALS = ("console", "wardex.err", "wardex.out", "watchdog", "scripts", "pings", "records")


def tell(camera):
    """Prints the journals' ends, which pytest shows of a claim that failed."""
    for name in JOURNALS:
        print(f"--- {name}", *camera.lines(name)[-40:], sep="\n")


@pytest.fixture
def put_on_desk():
    """Makes cameras, not yet on; skips where this machine offers no namespaces.

    A container as the box has one device at a time, and not every path of its own: the scenarios
    show there what can be shown.
    """
    home = Path(tempfile.mkdtemp(prefix="wx"))
    home.chmod(0o755)
    built = Path(os.environ["WARDEX_BIN"])
    cameras = []

    def make(**plan):
        plan["without"] = frozenset(plan.get("without", ()))
        instance = Instance(f"camera{len(cameras)}", home)
        programs = Programs(built, built / "wardex")
        try:
            NamespaceBox(instance, programs)
            camera = Camera(instance, Plan(**plan), programs)
        except BoxError as error:
            pytest.skip(str(error))
        cameras.append(camera)
        return camera

    yield make
    for camera in cameras:
        camera.power_off()
        tell(camera)
    shutil.rmtree(home, ignore_errors=True)


@pytest.fixture
def open_screen():
    """Runs programs on terminals of cameras, and ends them with the claim."""
    screens = []

    def make(camera, *words, **options):
        screens.append(Screen(camera, *words, **options))
        return screens[-1]

    yield make
    for screen in screens:
        print("--- screen", *screen.lines(), sep="\n")
        screen.close()


@pytest.fixture
def boot(put_on_desk):
    """Makes a camera and switches it on."""

    def make(**plan):
        camera = put_on_desk(**plan)
        camera.power_on()
        return camera

    return make


@pytest.fixture
def stable(boot):
    """A camera with all its services, both judged ones up."""
    camera = boot()
    camera.await_stable()
    return camera
