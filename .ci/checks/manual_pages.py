#!/usr/bin/python3
"""The manual pages show the options that the programs tell by --help, and no others.

    manual_pages.py PROGRAM...

wardex-log(7) has the levels and the keys that docs/logging.md has.

The page of a program is packaging/man/NAME.SECTION.md; a program without one is a fault.
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MAN = ROOT / "packaging/man"
LOG_PAGE = MAN / "wardex-log.7.md"
LOG_DOCUMENT = ROOT / "docs/logging.md"
LEVEL = re.compile(r"\b([A-Z]{4,5})\s+\(?(0x[0-9a-f]{2})\b")
OPTION = re.compile(r"(?<![\w-])--?[\w?][\w-]*")
TERMS = re.compile(r"^((?:\*\*-.*))\n: ", re.MULTILINE)


def section(page: str, title: str) -> str:
    """The text below a heading."""
    match = re.search(rf"^# {title}\n(.*?)(?=^# |\Z)", page, re.MULTILINE | re.DOTALL)
    if match is None:
        raise SystemExit(f"a page has no section {title}")
    return match[1].replace("\\-", "-")


def options_told(program: str) -> set[str]:
    """Those in the program's own words."""
    outcome = subprocess.run([program, "--help"], capture_output=True, text=True, check=True)
    return set(OPTION.findall(outcome.stdout))


def faults(program: str) -> list[str]:
    """What a program and its page tell differently."""
    name = Path(program).name
    pages = sorted(MAN.glob(f"{name}.[1-8].md"))
    if len(pages) != 1:
        return [f"{name} has {len(pages)} pages in {MAN}"]
    page = pages[0].read_text(encoding="utf-8")
    told = options_told(program)
    shown = {
        "SYNOPSIS": set(OPTION.findall(section(page, "SYNOPSIS"))),
        "OPTIONS": {
            option
            for terms in TERMS.findall(section(page, "OPTIONS"))
            for option in OPTION.findall(terms)
        },
    }
    return [
        f"{pages[0].name}, {title}: {' '.join(sorted(options ^ told))} on one side only"
        for title, options in shown.items()
        if options != told
    ]


def log_faults() -> list[str]:
    """What the page and the document of the log tell differently."""
    page, document = (place.read_text(encoding="utf-8") for place in (LOG_PAGE, LOG_DOCUMENT))
    configuration = page[page.index("## Configuration") : page.index("# EXAMPLES")]
    compared = {
        "levels": (set(LEVEL.findall(page)), set(LEVEL.findall(document))),
        "keys": (
            set(re.findall(r"^\*\*(\w+)\*\*\n: ", configuration, re.MULTILINE)),
            set(re.findall(r'^\| "(\w+)" \|', document, re.MULTILINE)),
        ),
    }
    return [
        f"{LOG_PAGE.name}, {what}: {sorted(shown ^ told)} on one side only"
        for what, (shown, told) in compared.items()
        if shown != told or not told
    ]


def main() -> int:
    """Compares each program with its page, and the page of the log with its document."""
    found = [fault for program in sys.argv[1:] for fault in faults(program)] + log_faults()
    print(*found, sep="\n", end="\n" if found else "")
    print(f"manual pages: {len(sys.argv) - 1} programs, {len(found)} faults")
    return 1 if found or len(sys.argv) == 1 else 0


if __name__ == "__main__":
    sys.exit(main())
