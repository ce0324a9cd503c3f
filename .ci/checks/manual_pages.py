#!/usr/bin/python3
"""The manual pages show the options that the programs tell by --help, and no others; so do the verbs
of a program that has some, with their arguments.

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
# Of the help of a program with verbs: "  -n,--newest INT:NONNEGATIVE  Text", "  NAME TEXT REQUIRED  Text".
VERB_OPTION = re.compile(r"^  (-\S+)( (?:TEXT|INT)\S*)?", re.MULTILINE)
ARGUMENT = re.compile(r"^  ([A-Z]+) TEXT( REQUIRED)?", re.MULTILINE)
TERMS = re.compile(r"^((?:\*\*-.*))\n: ", re.MULTILINE)


def section(page: str, title: str) -> str:
    """The text below a heading."""
    match = re.search(rf"^# {title}\n(.*?)(?=^# |\Z)", page, re.MULTILINE | re.DOTALL)
    if match is None:
        raise SystemExit(f"a page has no section {title}")
    return match[1].replace("\\-", "-")


def said(*words: str) -> str:
    """What a program prints."""
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout


def part(help_text: str, title: str) -> str:
    """The lines below a title of a program's help."""
    match = re.search(rf"^{title}:\n((?:  .*\n)*)", help_text, re.MULTILINE)
    return match[1] if match else ""


def options_shown(text: str) -> set[str]:
    """Those in the terms of a page's part."""
    return {option for terms in TERMS.findall(text) for option in OPTION.findall(terms)}


def verb_told(program: str, verb: str) -> tuple[str, set[str]]:
    """A verb with its arguments as a page's heading has them, and its options, those that take
    something with a star."""
    text = said(program, verb, "--help")
    arguments = [
        f"*{name}*" if required else f"[*{name}*]"
        for name, required in ARGUMENT.findall(part(text, "Positionals"))
    ]
    options = VERB_OPTION.findall(part(text, "Options"))
    return " ".join([verb, *arguments]), {
        name + ("*" if value else "") for names, value in options for name in names.split(",")
    }


def verbs_shown(page: str) -> dict[str, set[str]]:
    """The headings of the verbs with their options, those of every verb included."""
    common, *parts = re.split(r"^## ", section(page, "VERBS"), flags=re.MULTILINE)
    shown = {}
    for text in parts:
        heading, _, body = text.partition("\n")
        options = set(OPTION.findall(common))
        for terms in TERMS.findall(body):
            star = "*" if re.search(r" \*[^*]+\*$", terms) else ""
            options |= {option + star for option in OPTION.findall(terms)}
        shown[heading] = options
    return shown


def verb_faults(program: str, page: str, verbs: list[str]) -> list[str]:
    """What the program and its page tell differently about its verbs."""
    told = dict(verb_told(program, verb) for verb in verbs)
    shown = verbs_shown(page)
    found = [f"VERBS: '{verb}' on one side only" for verb in sorted(told.keys() ^ shown.keys())]
    return found + [
        f"VERBS, {verb}: {' '.join(sorted(shown[verb] ^ told[verb]))} on one side only"
        for verb in sorted(told.keys() & shown.keys())
        if shown[verb] != told[verb]
    ]


def faults(program: str) -> list[str]:
    """What a program and its page tell differently."""
    name = Path(program).name
    pages = sorted(MAN.glob(f"{name}.[1-8].md"))
    if len(pages) != 1:
        return [f"{name} has {len(pages)} pages in {MAN}"]
    page = pages[0].read_text(encoding="utf-8")
    help_text = said(program, "--help")
    told = set(OPTION.findall(help_text))
    shown = {
        "SYNOPSIS": set(OPTION.findall(section(page, "SYNOPSIS"))),
        "OPTIONS": options_shown(section(page, "OPTIONS")),
    }
    found = [
        f"{title}: {' '.join(sorted(options ^ told))} on one side only"
        for title, options in shown.items()
        if options != told
    ]
    verbs = re.findall(r"^  (\S+)", part(help_text, "Subcommands"), re.MULTILINE)
    if verbs:
        found += verb_faults(program, page.replace("\\-", "-"), verbs)
    return [f"{pages[0].name}, {fault}" for fault in found]


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
