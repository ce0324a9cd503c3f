"""Bounded waiting for a condition; the only place of the simulator that lets time pass."""

import time
from typing import Callable, Optional, TypeVar

T = TypeVar("T")


def now() -> float:
    """Seconds of the monotonic clock, the same inside and outside the box."""
    return time.clock_gettime(time.CLOCK_MONOTONIC)


def pause(seconds: float) -> None:
    """Lets a poll rest; never the reason why something has happened."""
    time.sleep(seconds)


def poll(condition: Callable[[], Optional[T]], bound: float, step: float = 0.01) -> Optional[T]:
    """Asks until the condition answers something true, for at most `bound` seconds.

    Returns that answer, or the last one (false or None) when the bound has passed.
    """
    end = now() + bound
    while True:
        answer = condition()
        if answer or now() >= end:
            return answer
        pause(step)
