"""The stories that `./run --scenario NAME` plays, and how one is played and judged.

    python3 -m wardex_desk.scenario NAME BIN FOLDER

plays one with the programs in BIN as they are, in an instance folder below FOLDER; exit status 0
when the device did what the story says, 1 when not, 77 when this machine has no box for it.
With --names it only lists the scenarios' names, with --soaks those that take long.
"""

from __future__ import annotations

import sys
from collections.abc import Sequence
from pathlib import Path
from typing import TextIO

from wardex_desk import judge_claims
from wardex_desk.box import BoxError, Programs
from wardex_desk.control import ControlError
from wardex_desk.controls import NotSeen
from wardex_desk.desk import Desk
from wardex_desk.device import Device, DeviceError
from wardex_desk.faults import SCENARIOS as FAULTS
from wardex_desk.faults import SOAKS
from wardex_desk.instance import InstanceError
from wardex_desk.judge import Verdict
from wardex_desk.judge_evidence import lives
from wardex_desk.scenarios_identity import SCENARIOS as IDENTITY
from wardex_desk.scenarios_last_resort import SCENARIOS as LAST_RESORT
from wardex_desk.scenarios_stage import Stage
from wardex_desk.scenarios_trouble import SCENARIOS as TROUBLE
from wardex_desk.scenarios_types import Scenario
from wardex_desk.sources import EventStream, in_order
from wardex_desk.story import Story
from wardex_desk.story_print import Printer

SCENARIOS: dict[str, Scenario] = {
    scenario.name: scenario for scenario in (*TROUBLE, *LAST_RESORT, *IDENTITY, *FAULTS, *SOAKS)
}


FAILED = 1
CANNOT_BE_SHOWN = 77


def catalogue() -> dict[str, str]:
    """The scenarios' names, each with one line of description."""
    return {name: scenario.summary for name, scenario in SCENARIOS.items()}


def play(name: str, desk: Desk, stream: TextIO) -> int:
    """Plays a scenario on a device of its own and prints story and verdict.

    Answers 0 only if the device did what the story says. BoxError and InstanceError when there can
    be no device.
    """
    scenario = SCENARIOS[name]
    printer = Printer(stream)
    with desk.device(scenario.plan) as device:
        for shortcoming in device.shortcomings():
            printer.remark(f"Beware: {shortcoming}")
        verdict = perform(scenario, device, printer)
        return report(scenario, verdict, device, printer)


def perform(scenario: Scenario, device: Device, printer: Printer | None = None) -> Verdict:
    """Plays a scenario on a device that was made from its plan, telling the story as it happens.

    Switches the device on and, in every case, off again. What the driver waited for in vain is a
    failed claim like any other.
    """
    stream = EventStream(device.instance.folder)
    verdict = Verdict()
    stage = Stage(device, stream, Story(), printer, verdict)
    try:
        for service, steps in scenario.orders.items():
            device.order(service, *steps)
        device.power_on()
        scenario.play(stage)
    except (NotSeen, DeviceError, BoxError, ControlError) as error:
        verdict.claim("the story runs its course", False, str(error).splitlines())
    finally:
        device.power_off()
    stage.close()
    judged = lives(in_order(stream.seen))
    judge_claims.readable(verdict, judged)
    scenario.judge(verdict, judged)
    return verdict


def report(scenario: Scenario, verdict: Verdict, device: Device, printer: Printer) -> int:
    """Prints the verdict, claim by claim; answers the exit status: 0 only if every claim holds."""
    printer.heading(f"{scenario.name}: {scenario.summary}")
    for finding in verdict.findings:
        printer.verdict(finding.word, finding.claim)
        for line in finding.details:
            printer.remark(line)
        for line in finding.evidence:
            printer.remark(f"! {line}")
    failed = sum(finding.holds is False for finding in verdict.findings)
    skipped = sum(finding.holds is None for finding in verdict.findings)
    judged = len(verdict.findings) - skipped
    aside = f", {skipped} cannot be shown here" if skipped else ""
    if verdict.holds:
        printer.verdict("PASS", f"{scenario.name}: all {judged} claims hold{aside}")
        return 0
    printer.verdict("FAIL", f"{scenario.name}: {failed} of {judged} claims do not hold{aside}")
    printer.remark(f"the device's journals are in {device.instance.folder}/log")
    return FAILED


def main(arguments: Sequence[str]) -> int:
    """For a test driver: nothing is built, and every scenario has a device of its own."""
    long_ones = [scenario.name for scenario in SOAKS]
    if list(arguments) == ["--names"]:
        print("\n".join(name for name in SCENARIOS if name not in long_ones))
        return 0
    if list(arguments) == ["--soaks"]:
        print("\n".join(long_ones))
        return 0
    name, programs, folder = arguments
    built = Programs(Path(programs), Path(programs) / "wardex")
    try:
        built.check()
    except BoxError as error:
        return _complain(str(error), FAILED)
    try:
        return play(name, Desk(built, name, Path(folder)), sys.stdout)
    except BoxError as error:
        return _complain(f"cannot be shown here: {error}", CANNOT_BE_SHOWN)
    except InstanceError as error:
        return _complain(str(error), FAILED)


def _complain(text: str, status: int) -> int:
    print(text, file=sys.stderr)
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
