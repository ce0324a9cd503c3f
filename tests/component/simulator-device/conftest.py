"""Devices for the claims: in a folder of the test's own, switched off at its end."""

import os
import shutil
import tempfile
from pathlib import Path

import pytest

from wardex_desk.box import BoxError, Programs
from wardex_desk.device import Device
from wardex_desk.firmware import Plan
from wardex_desk.instance import Instance
from wardex_desk.namespace_box import NamespaceBox

# Opens the watchdog, feeds it for as long as the file is there, and goes on living.
SUPERVISOR = """#!/usr/bin/python3 -S
import fcntl, os, threading
os.mkdir("/tmp/fed") if not os.path.exists("/tmp/fed") else None
node = os.open("/dev/watchdog", os.O_RDWR)
while os.path.exists("/tmp/fed"):
    fcntl.ioctl(node, 0x80045705, 0)
    threading.Event().wait(0.05)
threading.Event().wait()
"""


@pytest.fixture
def home():
    """A folder with a short name that everybody may read; gone after the test."""
    folder = Path(tempfile.mkdtemp(prefix="desk"))
    folder.chmod(0o755)
    yield folder
    shutil.rmtree(folder, ignore_errors=True)


@pytest.fixture
def programs(home):
    """The built peers, and a small supervisor that does nothing but feed."""
    supervisor = home / "supervisor"
    supervisor.write_text(SUPERVISOR)
    supervisor.chmod(0o755)
    return Programs(Path(os.environ["WARDEX_BIN"]), supervisor)


@pytest.fixture
def put_on_desk(home, programs):
    """Makes devices, not yet on; skips where this machine offers no namespaces."""
    devices = []

    def make(name="camera", **plan):
        try:
            device = Device(Instance(name, home), Plan(**plan), programs, NamespaceBox)
        except BoxError as error:
            pytest.skip(str(error))
        devices.append(device)
        return device

    yield make
    for device in devices:
        device.power_off()


@pytest.fixture
def camera(put_on_desk):
    """A device that is up."""
    device = put_on_desk()
    device.power_on()
    return device
