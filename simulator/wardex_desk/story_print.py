"""Puts the story's lines on paper: aligned columns, colour on a terminal only.

On the device: nothing; this is for the person at the desk. `NO_COLOR` turns colour off.
"""

from __future__ import annotations

import os
from collections.abc import Iterable, Mapping
from typing import TextIO

from wardex_desk.story import Line

_RESET = "\033[0m"
_DIM = "\033[2m"
_TONES = {
    "good": "\033[32m",
    "attention": "\033[33m",
    "bad": "\033[31m",
    "quiet": _DIM,
    "plain": "",
}


def wants_colour(stream: TextIO, environment: Mapping[str, str] = os.environ) -> bool:
    """Whether a person sees the stream on a terminal that can show colour, and has no objection."""
    if environment.get("NO_COLOR") or environment.get("TERM") == "dumb":
        return False
    return stream.isatty()


def harmless(text: str) -> str:
    """The text without control characters and broken letters, which must not reach a terminal."""
    return "".join(char if char.isprintable() else "?" for char in text)


def format_line(line: Line, colour: bool) -> str:
    """`   12.34 s  pictor    SuprUp -> SuprDown`"""
    text = harmless(line.text)
    clock = f"{line.at:8.2f} s"
    if not colour:
        return f"{clock}  {line.actor:<9} {text}".rstrip()
    tone = _TONES[line.tone]
    return f"{_DIM}{clock}{_RESET}  {tone}{line.actor:<9} {text}{_RESET if tone else ''}"


class Printer:
    """Writes lines to a stream as they come, and flushes them.

    Borrows: the stream.
    Errors:  those of the stream, BrokenPipeError among them.
    """

    def __init__(self, stream: TextIO, environment: Mapping[str, str] = os.environ) -> None:
        self._stream = stream
        self._colour = wants_colour(stream, environment)

    @property
    def colour(self) -> bool:
        """Whether lines are written in colour."""
        return self._colour

    def lines(self, lines: Iterable[Line]) -> None:
        """Writes the lines of the story."""
        for line in lines:
            print(format_line(line, self._colour), file=self._stream)
        self._stream.flush()

    def heading(self, text: str) -> None:
        """Sets a new section off."""
        bold = f"\033[1m{text}{_RESET}" if self._colour else text
        print(f"\n{bold}", file=self._stream, flush=True)

    def hint(self, text: str) -> None:
        """A word to the reader, beside the story."""
        print(f"{_DIM}{text}{_RESET}" if self._colour else text, file=self._stream, flush=True)

    def verdict(self, word: str, text: str) -> None:
        """`PASS  text`, `FAIL  text` or `SKIP  text`."""
        tone = {"PASS": _TONES["good"], "FAIL": _TONES["bad"]}.get(word, _TONES["attention"])
        mark = f"{tone}{word}{_RESET}" if self._colour else word
        print(f"{mark}  {harmless(text)}", file=self._stream, flush=True)

    def remark(self, text: str) -> None:
        """A line below a verdict, set in."""
        print(f"        {harmless(text)}", file=self._stream, flush=True)
