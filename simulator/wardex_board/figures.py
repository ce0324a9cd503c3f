"""What the supervisor costs on the board, as the table of docs/performance.md.

The board's clock counts instructions, so the time that a process worked is a number of instructions:
user space and the kernel's work for the process together.
"""

from __future__ import annotations

import subprocess
from collections.abc import Sequence
from pathlib import Path

from wardex_board import claims
from wardex_board.machine import POWER_OFF, RESET, SHIFT
from wardex_board.report import Life
from wardex_board.scenario import Lives, Part, Scenario, eeproms_of
from wardex_desk.judge import Verdict
from wardex_desk.places import REPOSITORY

DOCUMENT = REPOSITORY / "docs/performance.md"
BEGIN = "<!-- The table is written by ./board --figures --write-docs. -->"
END = "<!-- End of what ./board --figures --write-docs writes. -->"
NS_PER_INSTRUCTION = 1 << SHIFT
NS_PER_MS = 1_000_000
DEEDS = {"log-call": "log call that writes", "ping": "ping over the bus", "tick": "quiet tick"}


def _judge(verdict: Verdict, told: Lives) -> None:
    if not claims.ends(verdict, told["board"], RESET, POWER_OFF):
        return
    first, second = told["board"]
    for name in DEEDS:
        said = second.text(name)
        verdict.claim(f"{name} is measured", _is_measured(said), [said])
    for name in ("start-ns", "idle-ns", "stable-at"):
        verdict.claim(f"{name} is measured", first.number_of(name) > 0, [first.text(name)])
    sizes = {text.split(":")[0] for text in first.texts("memory")}
    verdict.equal("the memory is measured", {"VmLck", "VmRSS", "RssAnon"}, sizes)
    verdict.claim("the first feed is measured", bool(first.texts("feed")))


FIGURES = Scenario(
    "figures",
    "what the supervisor costs on the board",
    {"board": Part("figures", 2, 900, eeproms_of("ZK4XX"), watchdog="timeout=60")},
    _judge,
)


def per_deed(text: str) -> float:
    """Instructions of one deed, from `FEW MS MANY MS`."""
    few, few_ms, many, many_ms = (float(word) for word in text.split())
    return (many_ms - few_ms) / (many - few) * NS_PER_MS / NS_PER_INSTRUCTION


def _is_measured(text: str) -> bool:
    """More deeds took longer."""
    words = text.split()
    return len(words) == 4 and all(map(str.isdigit, words)) and int(words[1]) < int(words[3])


def _instructions(nanoseconds: float) -> str:
    return f"{nanoseconds / NS_PER_INSTRUCTION:,.0f} instr".replace(",", " ")


def _installed_kib(package: Path) -> str:
    done = subprocess.run(
        ["dpkg-deb", "-f", str(package), "Installed-Size"],
        check=True,
        capture_output=True,
        text=True,
    )
    return f"{done.stdout.strip()} KiB"


def table(told: Lives, packages: Sequence[Path]) -> str:
    """The rows, as a table of Markdown."""
    first, second = told["board"][0], told["board"][-1]
    memory = dict(text.split(": ", 1) for text in first.texts("memory"))
    rows = [
        ("resident memory", memory.get("VmRSS", "?").replace("kB", "KiB")),
        ("of it private", memory.get("RssAnon", "?").replace("kB", "KiB")),
        ("locked memory", memory.get("VmLck", "?").replace("kB", "KiB")),
        *(
            (f"size on disk of {package.name.split('_')[0]}", _installed_kib(package))
            for package in packages
        ),
        ("start until the bus name is owned", _instructions(first.number_of("start-ns"))),
        *(
            (title, f"{per_deed(second.text(name)):,.0f} instr".replace(",", " "))
            for name, title in DEEDS.items()
        ),
        ("idling, per second", _instructions(first.number_of("idle-ns") / 60)),
        ("from the kernel's start to the first feed", f"{_first_feed(first):.2f} s"),
        ("from the kernel's start to a stable device", f"{first.number_of('stable-at'):.2f} s"),
    ]
    lines = [f"| {title} | {figure} |" for title, figure in rows]
    return "\n".join(["| on the board | figure |", "| --- | --- |", *lines])


def _first_feed(life: Life) -> float:
    return float(life.texts("feed")[0].split()[0])


def write(text: str) -> None:
    """Puts the table into the document, in the place of the former one."""
    DOCUMENT.write_text(filled(DOCUMENT.read_text(encoding="utf-8"), text), encoding="utf-8")


def filled(document: str, text: str) -> str:
    """The document with this table between its marks."""
    before, begin, rest = document.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        raise OSError(f"{DOCUMENT} lacks the marks of the table: '{BEGIN}' and '{END}'")
    return f"{before}{BEGIN}\n\n{text}\n\n{END}{after}"
