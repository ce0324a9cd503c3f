#!/usr/bin/python3
"""Proves the examples of docs/logging.md.

  documented_examples.py programs               the CMake and C++ blocks are those of outside/
  documented_examples.py commands RECORDS       on a device: each block of commands runs, and prints
                                                the text block that follows it

RECORDS is the program that has written the records which the commands find.
"""

import re
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
DOCUMENT = HERE.parents[2] / "docs/logging.md"
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```\n", re.MULTILINE | re.DOTALL)


def blocks() -> list[tuple[str, str]]:
    """The fenced blocks: language and content."""
    return [(match[1], match[2]) for match in BLOCK.finditer(DOCUMENT.read_text("utf-8"))]


def check(claim: str, expected: str, found: str) -> int:
    """0 when both are the same; else says how they differ."""
    if expected == found:
        return 0
    print(f"{DOCUMENT.name}: {claim}\nexpected:\n{expected}\nfound:\n{found}", file=sys.stderr)
    return 1


def programs() -> int:
    """How many of the three files the document does not show as they are."""
    sources = {"cmake": "CMakeLists.txt", "cpp": "outside.cpp"}
    shown = {language: content for language, content in blocks() if language in sources}
    failures = sum(
        check(f"the block is not {name}", (HERE / "outside" / name).read_text(), shown[language])
        for language, name in sources.items()
    )
    printed = [content for language, content in blocks() if language == "text"][-1]
    return failures + check("not what it prints", (HERE / "outside/expected").read_text(), printed)


def commands(records: str) -> int:
    """How many blocks of commands fail or print something else than the document says."""
    subprocess.run([records], check=True, stdout=subprocess.DEVNULL)
    failures = 0
    run = 0
    following = blocks()[1:] + [("", "")]
    for (language, script), (next_language, text) in zip(blocks(), following):
        if language != "sh":
            continue
        run += 1
        outcome = subprocess.run(["bash", "-euc", script], capture_output=True, text=True)
        said = outcome.stdout + outcome.stderr
        failures += check(f"status of\n{script}", "0", str(outcome.returncode))
        if next_language == "text":
            failures += check(f"what is printed by\n{script}", text, said)
        else:
            # redis-cli ends with status 0 also when the server refuses.
            failures += check(f"an error of\n{script}", "", "".join(re.findall("ERR.*", said)))
    return failures + check("blocks of commands", "3", str(run))


if __name__ == "__main__":
    sys.exit(min(programs() if sys.argv[1] == "programs" else commands(sys.argv[2]), 1))
