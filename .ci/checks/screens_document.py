#!/usr/bin/python3
"""The operator's screens in the documents are what the simulated device shows, but for times.

    screens_document.py            compares them with what the system tests expect; needs no device
    screens_document.py --fix      puts in what devices on the desk show now, built by the dev preset,
                                   and what the system tests expect of it (tests/system/situations)

A screen is a fenced block behind a line such as <!-- screen: pictor-hung: wardexctl why -->.
"""

import os
import re
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "simulator"), str(ROOT / "tests/system")]

import situations  # noqa: E402
from camera import Camera  # noqa: E402
from console import steady  # noqa: E402

from wardex_desk.box import Programs  # noqa: E402
from wardex_desk.firmware import Plan  # noqa: E402
from wardex_desk.instance import Instance  # noqa: E402

SCREEN = re.compile(
    r"(<!-- screen: ([\w-]+): wardexctl ([^\n]*?) -->\n+```text\n)(.*?)(```\n)", re.DOTALL
)


def shown(console: str) -> dict[str, str]:
    """What each command of a console says, the first time that it was given."""
    answers: dict[str, str] = {}
    for part in re.split(r"^\$ wardexctl ", console, flags=re.MULTILINE)[1:]:
        command, _, answer = part.partition("\n")
        answers.setdefault(command, re.sub(r"\[status \d+\]\n*\Z", "", answer))
    return answers


def consoles() -> dict[str, str]:
    """What the operator sees in each situation, of devices that are made for it."""
    built = ROOT / "build/dev/bin"
    found = {}
    for name, situation in situations.ALL.items():
        with tempfile.TemporaryDirectory(prefix="wx") as home:
            os.chmod(home, 0o755)
            plan = Plan(without=frozenset({"supervisor"}), **situation.plan)
            with Camera(
                Instance("camera", Path(home)), plan, Programs(built, built / "wardex")
            ) as it:
                found[name] = situation.console(it)
        print(f"seen: {name}", file=sys.stderr)
    return found


def fix() -> None:
    """Writes screens and expectations anew."""
    seen = consoles()
    for name, console in seen.items():
        situations.expected(name).write_text(steady(console), encoding="utf-8")
    for document in sorted((ROOT / "docs").glob("*.md")):
        text = document.read_text(encoding="utf-8")
        document.write_text(
            SCREEN.sub(lambda found: found[1] + shown(seen[found[2]])[found[3]] + found[5], text),
            encoding="utf-8",
        )


def main() -> int:
    """Compares, or fixes."""
    if sys.argv[1:] == ["--fix"]:
        fix()
    screens, faults = 0, 0
    for document in sorted((ROOT / "docs").glob("*.md")):
        for _, name, command, screen, _ in SCREEN.findall(document.read_text(encoding="utf-8")):
            screens += 1
            expected = shown(situations.expected(name).read_text(encoding="utf-8")).get(command, "")
            if steady(screen) != expected:
                faults += 1
                print(f"{document.name}: 'wardexctl {command}' ({name}) looks different now")
    print(f"screens: {screens}, {faults} faults (screens_document.py --fix renders them)")
    return 1 if faults or not screens else 0


if __name__ == "__main__":
    sys.exit(main())
