"""How a command of the desk ends when a person, or the system, tells it to."""

import signal
from collections.abc import Iterator
from contextlib import contextmanager
from types import FrameType
from typing import NoReturn, Optional

ENDS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Stopped(BaseException):
    """The person, or the system, ends the command; number: of the signal."""

    def __init__(self, number: int) -> None:
        super().__init__(number)
        self.number = number


def stop_when_told() -> None:
    """From now on each of ENDS raises Stopped, once."""
    for end in ENDS:
        signal.signal(end, _stop)


@contextmanager
def interrupts_left_to_programs() -> Iterator[None]:
    """Ctrl-C is meant for the program in the foreground, which answers for it by its exit status."""
    # Not SIG_IGN, which the program would inherit.
    before = signal.signal(signal.SIGINT, lambda number, frame: None)
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, before)


def _stop(number: int, _: Optional[FrameType]) -> NoReturn:
    # One is enough: a second must not cut short the tidying up.
    for end in ENDS:
        signal.signal(end, signal.SIG_IGN)
    raise Stopped(number)
