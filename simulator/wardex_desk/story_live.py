"""Tells a running device's story as it happens."""

from __future__ import annotations

from collections.abc import Callable
from typing import TextIO

from wardex_desk.device import Device
from wardex_desk.instance import DEFAULT_NAME
from wardex_desk.scenarios_stage import LOOK_S, Stage
from wardex_desk.sources import EventStream
from wardex_desk.story import Story
from wardex_desk.story_print import Printer
from wardex_desk.waiting import pause


def hints(family: str, name: str) -> list[str]:
    """What a person is told when a device has been put on the desk."""
    run = "./run" if name == DEFAULT_NAME else f"./run --name {name}"
    return [
        f"A {family} device is on the desk; Ctrl-C takes it away again.",
        f"From another terminal: {run} ctl status, {run} do pictor hang, {run} logs, {run} sh,"
        " ./run --help",
    ]


def follow(device: Device, stream: TextIO, stop: Callable[[], bool]) -> None:
    """Tells the events of a device that is on, until stop() answers true or the device is off.

    What was still to be told is told in every case, also when an exception ends the waiting.
    """
    printer = Printer(stream)
    stage = Stage(device, EventStream(device.instance.folder), Story(), printer)
    for line in hints(device.plan.family, device.instance.name):
        printer.hint(line)
    try:
        while device.is_on() and not stop():
            stage.look()
            pause(LOOK_S)
    finally:
        stage.close()
