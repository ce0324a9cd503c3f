"""The desk: which programs and which folder the devices of one command use.

The story and the scenarios are reached through these two functions:

    wardex_desk.story_live.follow(device, stream, stop)
        tells the events of a device that is on until stop() answers true or the device is off
    wardex_desk.scenario.catalogue() -> dict[str, str]
        the scenarios' names, each with one line of description
    wardex_desk.scenario.play(name, desk, stream) -> int
        plays one on a device of its own; 0 only if the device did what the story says
"""

from dataclasses import dataclass
from pathlib import Path
from typing import Optional

from wardex_desk.box import Programs
from wardex_desk.device import Device
from wardex_desk.firmware import Plan
from wardex_desk.instance import DEFAULT_NAME, Instance


@dataclass(frozen=True)
class Desk:
    """name: of the instance that the person asked for. home: folder of the instance folders."""

    programs: Programs
    name: str = DEFAULT_NAME
    home: Optional[Path] = None

    def instance(self) -> Instance:
        """The folder of the named device."""
        return Instance(self.name, self.home)

    def device(self, plan: Plan) -> Device:
        """A new device under that name, not yet switched on."""
        return Device(self.instance(), plan, self.programs)
