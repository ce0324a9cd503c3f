"""Sums the watchdog's feeds up: "fed 10 times, longest gap 1.02 s"."""

from __future__ import annotations

from collections.abc import Iterator

FEEDS_PER_LINE = 10

# A second is the rule; from here on the supervisor was held up and the reader should know.
NOTABLE_GAP_S = 2.5


class FeedCount:
    """The feeds since the last line about them. Times and gaps are seconds."""

    def __init__(self) -> None:
        self.latest = 0.0
        self._count = 0
        self._longest = 0.0

    def fed(self, at: float) -> Iterator[tuple[str, str]]:
        """Counts a feed; answers a line with its tone when it is time for one."""
        gap = at - self.latest if self.latest else 0.0
        self.latest = at
        self._count += 1
        self._longest = max(self._longest, gap)
        if self._count == FEEDS_PER_LINE or gap >= NOTABLE_GAP_S:
            tone = "attention" if self._longest >= NOTABLE_GAP_S else "quiet"
            yield self.summary(), tone

    def summary(self) -> str:
        """The line, empty when there was no feed since the last one; begins to count anew."""
        if not self._count:
            return ""
        times = "once" if self._count == 1 else f"{self._count} times"
        text = f"fed {times}"
        if self._longest:
            text += f", longest gap {self._longest:.2f} s"
        self._count, self._longest = 0, 0.0
        return text

    def silence(self, at: float) -> float:
        """Seconds from the last feed to `at`; 0 when there was none."""
        return at - self.latest if self.latest else 0.0
