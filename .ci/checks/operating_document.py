#!/usr/bin/python3
"""docs/operating.md lists every text of the daemon at WARN and above, and no other.

Looks for the calls of the logger in the daemon's rooms, resolves constants and texts that are joined
or chosen, and compares text and level with the rows of the document. Prints what differs; exits with
1 when anything does.
"""

import re
import sys
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "docs/operating.md"
ROOMS = ("src", "identification")
LEVELS = "WARN|ERROR|FATAL|EMERG"

CALL = re.compile(rf"\b(?:log|logOnce)\s*\(\s*(?:Logger::)*({LEVELS})\s*,")
LITERAL = r'"(?:[^"\\]|\\.)*"'
CONSTANT = re.compile(rf"\b(k\w+)(?:\[\])?\s*=\s*({LITERAL})\s*;")
CONVERSION = re.compile(r"%(?:s|d|u|x)")
ROW = re.compile(rf'^\|[^|]*\| "([^|]*)" \(({LEVELS})\)\*? \|')
COMMENT = re.compile(r"//.*$", re.MULTILINE)


@dataclass(frozen=True)
class Text:
    """A text as the source has it: its format with conversions, and where it stands."""

    level: str
    form: str
    place: str

    def matches(self, level: str, line: str) -> bool:
        """Whether a record of this level could read so."""
        parts = [re.escape(part) for part in CONVERSION.split(self.form)]
        return level == self.level and re.fullmatch(".+".join(parts), line) is not None


def arguments(source: str, at: int) -> list[str]:
    """The arguments of a call from a place behind its opening bracket on."""
    found = [""]
    depth = 0
    for token in re.findall(rf"{LITERAL}|.", source[at:], re.DOTALL):
        if token in "([{":
            depth += 1
        elif token in ")]}":
            if depth == 0:
                break
            depth -= 1
        if token == "," and depth == 0:
            found.append("")
        else:
            found[-1] += token
    return [argument.strip() for argument in found]


def alternatives(argument: str, constants: dict[str, str]) -> list[str]:
    """The texts that an argument can be; none for what is no text of the source."""
    choices = argument.split("?", 1)[1].split(":", 1) if re.search(r"\w \? ?", argument) else None
    if choices is None or argument.startswith('"'):
        choices = [argument]
    texts = []
    for choice in choices:
        choice = choice.strip()
        joined = "".join(literal[1:-1] for literal in re.findall(LITERAL, choice))
        if joined and not re.sub(LITERAL, "", choice).strip():
            texts.append(joined)
        elif choice in constants:
            texts.append(constants[choice])
    return texts


def filled(form: str, rest: list[str], constants: dict[str, str]) -> str:
    """A format with those of its conversions replaced whose values the source tells."""
    values = iter(rest)

    def value(match: re.Match[str]) -> str:
        known = alternatives(next(values, ""), constants)
        return known[0] if len(known) == 1 else match[0]

    return CONVERSION.sub(value, form)


def texts_of_the_source() -> list[Text]:
    """What the daemon can write."""
    files = [
        place
        for room in ROOMS
        for place in sorted((ROOT / room).rglob("*"))
        if place.suffix in (".h", ".cpp")
    ]
    sources = {place: COMMENT.sub("", place.read_text(encoding="utf-8")) for place in files}
    constants = {}
    for source in sources.values():
        constants.update({match[1]: match[2][1:-1] for match in CONSTANT.finditer(source)})
    found = []
    for place, source in sources.items():
        for call in CALL.finditer(source):
            line = source.count("\n", 0, call.start()) + 1
            where = f"{place.relative_to(ROOT)}:{line}"
            form, *rest = arguments(source, call.end())
            forms = alternatives(form, constants)
            if not forms:
                raise SystemExit(f"{where}: cannot tell the text from '{form}'")
            found += [Text(call[1], filled(each, rest, constants), where) for each in forms]
    return found


def main() -> int:
    """Compares both ways."""
    texts = texts_of_the_source()
    rows = [
        match
        for line in DOCUMENT.read_text(encoding="utf-8").splitlines()
        if (match := ROW.match(line))
    ]
    failures = [
        f'{text.place}: {text.level} "{text.form}" is not in {DOCUMENT.name}'
        for text in texts
        if not any(text.matches(row[2], row[1]) for row in rows)
    ]
    failures += [
        f'{DOCUMENT.name}: no source writes {row[2]} "{row[1]}"'
        for row in rows
        if not any(text.matches(row[2], row[1]) for text in texts)
    ]
    print(*failures, sep="\n", end="\n" if failures else "")
    print(f"operating: {len(texts)} texts, {len(rows)} rows, {len(failures)} differences")
    return 1 if failures or not texts else 0


if __name__ == "__main__":
    sys.exit(main())
