"""Tells the person who waits what is going on."""

import time
from typing import TextIO


class Progress:
    """One line for each row, on a stream that is not the table's.

    On a terminal the line follows the measurement; into a file each row is one line.
    """

    def __init__(self, stream: TextIO, rows: int) -> None:
        self._stream = stream
        self._rows = rows
        self._number = 0
        self._name = ""
        self._begin = time.monotonic()

    def row(self, name: str) -> None:
        """The next row begins."""
        self._number += 1
        self._name = name
        self._begin = time.monotonic()
        self.step("")

    def step(self, what: str) -> None:
        """Something within the row begins; shown only where it can be wiped again."""
        if self._stream.isatty():
            self._write(f"\r\033[K{self._head()}{': ' if what else ''}{what}")

    def done(self, word: str) -> None:
        """The row has ended with this verdict."""
        seconds = time.monotonic() - self._begin
        wipe = "\r\033[K" if self._stream.isatty() else ""
        self._write(f"{wipe}{self._head()}: {word} ({seconds:.1f} s)\n")

    def _head(self) -> str:
        return f"[{self._number}/{self._rows}] {self._name}"

    def _write(self, text: str) -> None:
        self._stream.write(text)
        self._stream.flush()
