"""The command ./run."""

import os
import signal
import sys
from typing import Sequence

from wardex_desk import (
    building,
    command_line,
    deeds,
    faults_report,
    record_log,
    scenario,
    shell,
    story_live,
)
from wardex_desk.box import BoxError
from wardex_desk.building import BuildError
from wardex_desk.command_line import Request
from wardex_desk.control import ControlError
from wardex_desk.controls import Controls
from wardex_desk.deeds import WrongWords
from wardex_desk.desk import Desk
from wardex_desk.device import DeviceError
from wardex_desk.eeprom import DescriptionError
from wardex_desk.ending import Stopped, stop_when_told
from wardex_desk.firmware import Plan
from wardex_desk.instance import DEFAULT_NAME, Instance, InstanceError

FAILED = 1
WRONG_WORDS = 2


def main(arguments: Sequence[str]) -> int:
    """Does what the words ask for; 0 done, 1 failed, 2 wrong words, 128+n ended by a signal."""
    stop_when_told()
    try:
        return _perform(command_line.parse(arguments))
    except WrongWords as error:
        return _complain(str(error), WRONG_WORDS)
    except (
        BoxError,
        BuildError,
        ControlError,
        DescriptionError,
        DeviceError,
        InstanceError,
    ) as error:
        return _complain(str(error), FAILED)
    except BrokenPipeError:
        # The reader of our words has gone, as after `./run logs | head`.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return FAILED
    except Stopped as stopped:
        # Ctrl-C is how the story ends when all is well.
        return 0 if stopped.number == signal.SIGINT else 128 + stopped.number


def _complain(text: str, status: int) -> int:
    print(f"run: {text}", file=sys.stderr)
    return status


def _perform(request: Request) -> int:
    instance = Instance(request.name, request.home)
    if request.command == "help":
        print(command_line.help_text())
    elif request.command == "list":
        for name, meaning in scenario.catalogue().items():
            print(f"{name:<20} {meaning}")
    elif request.command == "do":
        deed = deeds.deed(request.words)
        _require_running(instance)
        deed.perform(Controls(instance))
        print(deed.done)
    elif request.command == "sh":
        words = [word for word in request.words if word != "--"]
        return shell.open_shell(instance, words, sys.stdin.isatty())
    elif request.command == "ctl":
        return shell.run_program(instance, ["wardexctl", *request.words])
    elif request.command == "logs":
        _require_running(instance)
        wanted = record_log.Wanted(request.follow, request.level, request.text)
        return record_log.show(instance, wanted, sys.stdout, sys.stdout.isatty())
    else:
        return _put_on_desk(request)
    return 0


def _require_running(instance: Instance) -> None:
    if not instance.is_running():
        raise InstanceError(f"no device '{instance.name}' is running (start it with ./run)")


def _put_on_desk(request: Request) -> int:
    if request.command == "scenario":
        names = list(scenario.catalogue())
        if request.scenario not in names:
            raise WrongWords(
                f"no scenario is called '{request.scenario}': say one of {', '.join(names)}"
            )
    programs = building.programs(request.preset, request.wardex, sys.stderr)
    if request.command == "faults":
        return faults_report.play_and_tell(
            programs, request.home, request.soak, request.write_docs, sys.stdout
        )
    if request.command == "scenario":
        # Under its own name, so that it can be played beside a camera that is on the desk.
        name = request.scenario if request.name == DEFAULT_NAME else request.name
        return scenario.play(request.scenario, Desk(programs, name, request.home), sys.stdout)
    return _live(Desk(programs, request.name, request.home), request)


def _live(desk: Desk, request: Request) -> int:
    plan = Plan(family=request.family, developer=request.developer, watchdog_ms=request.watchdog_ms)
    with desk.device(plan) as device:
        for shortcoming in device.shortcomings():
            print(f"Beware: {shortcoming}", file=sys.stderr)
        device.power_on()
        story_live.follow(device, sys.stdout, lambda: False)
        return _complain(f"the device went down for good:\n{device.last_words()}", FAILED)
