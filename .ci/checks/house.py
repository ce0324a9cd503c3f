#!/usr/bin/python3
"""The rules of this house that no compiler checks.

Run without arguments from anywhere in the tree; prints one line per breach and exits with 1 when
there is any. The rules are described in docs/development.md.
"""

import re
import subprocess
import sys
from pathlib import Path
from typing import Callable, Iterator

ROOT = Path(__file__).resolve().parents[2]
PRODUCT = ("src/", "identification/", "logger/", "quorl/", "tools/")
CODE = (".h", ".cpp", ".c", ".py", ".sh")
MAX_LINES = 500

# Facts of the device stand in these headers and in the bus descriptions, nowhere else.
FACT_HEADERS = re.compile(r"(Paths|Limits|Layout|Defaults|Wire|Names)\.h$")
DEVICE_LITERAL = re.compile(r'"(?:/(?:dev|tmp|etc|opt|bin|proc|sys)/|com\.orvo\.|LOG:|LOGGER:)')
TEST_HOOK = re.compile(
    r"friend class .*Test|FRIEND_TEST|#\s*if(?:def)?\s+.*(?:TEST|UNIT)|qEnvironmentVariable|\bgetenv\s*\("
)
TIMED_WAIT = re.compile(r"\b(?:sleep|usleep|msleep|nanosleep|sleep_for|sleep_until)\s*\(")
# Where a wait by time is the point: the bounded poll itself, and a device that plays slow.
MAY_WAIT = ("tests/support/Eventually.h", "simulator/wardex_desk/waiting.py")
RAW_RELEASE = re.compile(
    r"(?<![\w.>:])(?:free|close|freeReplyObject|redisFree|udev_unref|cJSON_Delete)\s*\("
)

# A log call, the question in front of it, and what makes a text for it.
OBJECT = r"\w+(?:\(\))?(?:(?:->|\.)\w+(?:\(\))?)*?"
LOG_CALL = re.compile(
    rf"(?:if \((?P<asked>{OBJECT})(?:->|\.)isEnabled\((?P<level>[\w:]+)\)\)\s*\{{\s*)?"
    rf"\b(?P<logger>{OBJECT})(?:->|\.)(?:log|logOnce)\(\s*(?P<own>[\w:]+),(?P<rest>[^;]*);"
)
CONVERSION = re.compile(
    r"\b(?:qPrintable|qUtf8Printable|toLocal8Bit|toUtf8|toLatin1|toStdString|constData|c_str)\("
)

Breach = tuple[str, int, str]


def tracked_files() -> list[str]:
    listing = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard"],
        cwd=ROOT,
        check=True,
        capture_output=True,
        text=True,
    )
    return [name for name in listing.stdout.splitlines() if (ROOT / name).is_file()]


def code_lines(name: str) -> Iterator[tuple[int, str]]:
    """The numbered lines of a file without whole-line comments."""
    text = (ROOT / name).read_text(encoding="utf-8")
    for number, line in enumerate(text.splitlines(), 1):
        if not line.lstrip().startswith(("//", "#!", "*")):
            yield number, line


def matching(name: str, pattern: re.Pattern[str], claim: str) -> Iterator[Breach]:
    for number, line in code_lines(name):
        if pattern.search(line):
            yield name, number, claim


def length(name: str) -> Iterator[Breach]:
    if name.endswith(CODE):
        lines = (ROOT / name).read_text(encoding="utf-8").count("\n")
        if lines > MAX_LINES:
            yield name, lines, f"is longer than {MAX_LINES} lines"


def header_guard(name: str) -> Iterator[Breach]:
    if name.endswith(".h") and "#pragma once" not in (ROOT / name).read_text(encoding="utf-8"):
        yield name, 1, "has no #pragma once"


def device_literal(name: str) -> Iterator[Breach]:
    if name.startswith(PRODUCT) and name.endswith((".h", ".cpp")) and not FACT_HEADERS.search(name):
        yield from matching(
            name, DEVICE_LITERAL, "a fact of the device outside its constants header"
        )


def test_hook(name: str) -> Iterator[Breach]:
    if name.startswith(PRODUCT) and name.endswith((".h", ".cpp")):
        yield from matching(name, TEST_HOOK, "a hook or switch for tests in the product")


def timed_wait(name: str) -> Iterator[Breach]:
    if name.startswith(("tests/", "simulator/")) and name.endswith(CODE) and name not in MAY_WAIT:
        yield from matching(name, TIMED_WAIT, "waits for a time instead of a condition")


def raw_release(name: str) -> Iterator[Breach]:
    if name.startswith(PRODUCT) and name.endswith(".cpp"):
        yield from matching(name, RAW_RELEASE, "frees a C handle by hand: give it a deleter type")


def masked_conversion(name: str) -> Iterator[Breach]:
    if name.startswith(PRODUCT) and name.endswith(".cpp"):
        text = (ROOT / name).read_text(encoding="utf-8")
        for call in LOG_CALL.finditer(text):
            asked = (call["asked"], call["level"]) == (call["logger"], call["own"])
            if CONVERSION.search(call["rest"]) and not asked:
                line = text.count("\n", 0, call.start("logger")) + 1
                yield name, line, "makes a text for a masked level: ask isEnabled() for it first"


RULES: tuple[Callable[[str], Iterator[Breach]], ...] = (
    length,
    header_guard,
    device_literal,
    test_hook,
    timed_wait,
    raw_release,
    masked_conversion,
)


def main() -> int:
    names = tracked_files()
    breaches = [breach for name in names for rule in RULES for breach in rule(name)]
    for name, number, claim in breaches:
        print(f"{name}:{number}: {claim}")
    print(f"house: {len(names)} files, {len(breaches)} breaches")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
