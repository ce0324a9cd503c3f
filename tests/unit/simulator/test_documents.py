"""The words for ./run that the documents show are words that it takes."""

import re
import shlex

import pytest

from wardex_desk.command_line import parse
from wardex_desk.places import REPOSITORY

BLOCK = re.compile(r"^```\w*\n(.*?)^```", re.MULTILINE | re.DOTALL)


def shown():
    """Every line of a fenced block that begins with ./run."""
    for document in [REPOSITORY / "README.md", *sorted((REPOSITORY / "docs").glob("*.md"))]:
        for block in BLOCK.findall(document.read_text(encoding="utf-8")):
            for line in block.splitlines():
                if line.startswith("./run"):
                    yield line


@pytest.mark.parametrize("line", sorted(set(shown())))
def test_command_in_a_document_is_taken(line):
    parse(shlex.split(line, comments=True)[1:])


def test_documents_show_how_to_read_the_log():
    assert "./run logs" in set(shown())
