"""How a command of the desk ends when a person, or the system, tells it to."""

import signal
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


def _stop(number: int, _: Optional[FrameType]) -> NoReturn:
    # One is enough: a second must not cut short the tidying up.
    for end in ENDS:
        signal.signal(end, signal.SIG_IGN)
    raise Stopped(number)
