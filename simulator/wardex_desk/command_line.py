"""The words of ./run, taken apart."""

import json
from dataclasses import dataclass, field
from pathlib import Path
from typing import Optional, Sequence

from wardex_desk import deeds, families
from wardex_desk.deeds import WrongWords
from wardex_desk.events import LEVELS
from wardex_desk.instance import DEFAULT_NAME
from wardex_desk.places import REPOSITORY

COMMANDS = ("do", "ctl", "sh", "logs")
# What stands behind them is for a program on the device.
VERBATIM = ("ctl", "sh")
DEFAULT_PRESET = "dev"
DEFAULT_WATCHDOG_MS = 10_000

# Option -> what its value is; empty: it takes none.
OPTIONS = {
    "--scenario": "name",
    "--list": "",
    "--faults": "",
    "--soak": "",
    "--write-docs": "",
    "--name": "name",
    "--family": "family",
    "--developer": "",
    "--watchdog": "milliseconds",
    "--preset": "preset",
    "--wardex": "path",
    "--home": "folder",
    "--follow": "",
    "-f": "",
    "--level": "level",
    "-g": "text",
    "--help": "",
    "-h": "",
}

HELP = (
    ("", "a camera on the desk tells what happens to it, until Ctrl-C"),
    ("--scenario NAME", "play a story without a person; exit 0 only if the device kept to it"),
    ("--list", "the scenarios, one line each"),
    (
        "--faults [--soak] [--write-docs]",
        "play every scenario that is a fault, with --soak the long ones, too, and show the longest"
        " time between two feeds; --write-docs puts the table into docs/reliability.md",
    ),
    *deeds.HELP,
    ("ctl [VERB ...]", "the operator's command wardexctl on the device, such as: ctl status"),
    ("sh [COMMAND]", "a shell on the device, or one command there"),
    (
        "logs [-f] [--level LEVEL] [-g TEXT]",
        "the device's log records, of this level and worse, with this text in the message;"
        " -f goes on with what comes",
    ),
    ("--name NAME", f"which device, when several run side by side (default: {DEFAULT_NAME})"),
    ("--family FAMILY", f"{', '.join(families.names())} (default: {families.DEFAULT})"),
    ("--developer", "start with developer mode's marker set"),
    ("--watchdog MS", f"the hardware watchdog's countdown (default: {DEFAULT_WATCHDOG_MS})"),
    ("--preset PRESET", f"another build, such as asan-ubsan (default: {DEFAULT_PRESET})"),
    ("--wardex PATH", "supervise with this executable instead of the one built here"),
    ("--home FOLDER", "where the devices' folders go (default: .run)"),
    ("--help", "this"),
)


@dataclass
class Request:
    """What the person asks for. command: run, scenario, faults, list, help or one of COMMANDS."""

    command: str = "run"
    words: list[str] = field(default_factory=list)
    scenario: str = ""
    name: str = DEFAULT_NAME
    family: str = families.DEFAULT
    developer: bool = False
    watchdog_ms: int = DEFAULT_WATCHDOG_MS
    preset: str = DEFAULT_PRESET
    wardex: Optional[Path] = None
    home: Optional[Path] = None
    follow: bool = False
    level: str = ""
    text: str = ""
    soak: bool = False
    write_docs: bool = False


def presets() -> list[str]:
    """The builds that there are recipes for."""
    recipes = json.loads((REPOSITORY / "CMakePresets.json").read_text(encoding="utf-8"))
    return [recipe["name"] for recipe in recipes["buildPresets"]]


def help_text() -> str:
    """One line for each way to use ./run."""
    width = max(len(words) for words, _ in HELP)
    lines = [f"  ./run {words:<{width}}  {meaning}" for words, meaning in HELP]
    return "A camera device on the desk, with the real supervisor in it.\n\n" + "\n".join(lines)


def parse(arguments: Sequence[str]) -> Request:
    """Takes the words apart; WrongWords names what would be right."""
    request = Request()
    rest = list(arguments)
    while rest:
        word = rest.pop(0)
        if word.startswith("-"):
            _option(request, word, rest)
        elif request.command in COMMANDS:
            request.words.append(word)
        elif word in COMMANDS:
            request.command = word
            if word in VERBATIM:
                request.words = rest
                break
        else:
            raise WrongWords(
                f"'{word}' is not known: say {', '.join(COMMANDS)} or an option, see ./run --help"
            )
    if request.command == "logs" and request.words:
        raise WrongWords(f"'{request.words[0]}' is one word too many after 'logs'")
    if (request.soak or request.write_docs) and request.command != "faults":
        raise WrongWords("'--soak' and '--write-docs' belong to '--faults'")
    for option, value in (("--level", request.level), ("-g", request.text)):
        if value and request.command != "logs":
            raise WrongWords(f"'{option}' belongs to 'logs'")
    return request


def _option(request: Request, word: str, rest: list[str]) -> None:
    option, equals, value = word.partition("=")
    if option not in OPTIONS:
        raise WrongWords(f"'{option}' is not known: the options are {', '.join(OPTIONS)}")
    kind = OPTIONS[option]
    if kind and not equals:
        if not rest:
            raise WrongWords(f"after '{option}' comes a {kind}")
        value = rest.pop(0)
    elif not kind and equals:
        raise WrongWords(f"'{option}' takes no value")
    _apply(request, option, value)


def _apply(request: Request, option: str, value: str) -> None:
    if option in ("--help", "-h"):
        request.command = "help"
    elif option == "--list":
        request.command = "list"
    elif option == "--faults":
        request.command = "faults"
    elif option in ("--soak", "--write-docs"):
        setattr(request, option[2:].replace("-", "_"), True)
    elif option == "--scenario":
        request.command, request.scenario = "scenario", value
    elif option in ("--follow", "-f"):
        request.follow = True
    elif option == "--level":
        if value.upper() not in LEVELS:
            raise WrongWords(f"no level is called '{value}': say one of {', '.join(LEVELS)}")
        request.level = value.upper()
    elif option == "-g":
        request.text = value
    elif option == "--developer":
        request.developer = True
    elif option == "--watchdog":
        if not value.isdecimal() or int(value) == 0:
            raise WrongWords(f"--watchdog {value}: a number of milliseconds above 0 is needed")
        request.watchdog_ms = int(value)
    elif option == "--family":
        if value not in families.names():
            raise WrongWords(
                f"no family is called '{value}': say one of {', '.join(families.names())}"
            )
        request.family = value
    elif option == "--preset":
        if value not in presets():
            raise WrongWords(f"no preset is called '{value}': say one of {', '.join(presets())}")
        request.preset = value
    elif option in ("--wardex", "--home"):
        setattr(request, option[2:], Path(value).resolve())
    else:
        setattr(request, option[2:], value)
