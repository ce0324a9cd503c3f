"""Keeps a flood of equal lines from drowning the story.

A camera whose family has none of the two judged services writes thousands of records a second.
"""

from __future__ import annotations

from dataclasses import dataclass

WINDOW_S = 1.0
TOLD_PER_WINDOW = 5

Words = tuple[float, str, str, str]


@dataclass
class _Repetition:
    since: float
    tone: str
    count: int = 0
    swallowed: int = 0
    flooding: bool = False


class Flood:
    """Lets the first few equal lines of a second through and counts the others.

    Units: seconds. A kind of line that has flooded one second is only counted in the next.
    """

    def __init__(self) -> None:
        self._kinds: dict[tuple[str, str], _Repetition] = {}
        self._latest = 0.0

    def admit(self, at: float, actor: str, text: str, tone: str) -> list[Words]:
        """The lines to tell now: sums of seconds that are over, then this one unless swallowed."""
        self._latest = at
        lines = self._expire(at)
        kind = self._kinds.setdefault((actor, text), _Repetition(at, tone))
        kind.count += 1
        if kind.flooding or kind.count > TOLD_PER_WINDOW:
            kind.swallowed += 1
        else:
            lines.append((at, actor, text, tone))
        return lines

    def drain(self) -> list[Words]:
        """The sums of what is still counted."""
        lines = [
            self._sum(self._latest, actor, text, kind)
            for (actor, text), kind in self._kinds.items()
            if kind.swallowed
        ]
        self._kinds.clear()
        return lines

    def _expire(self, at: float) -> list[Words]:
        lines: list[Words] = []
        for (actor, text), kind in list(self._kinds.items()):
            if at - kind.since < WINDOW_S:
                continue
            if kind.swallowed:
                lines.append(self._sum(kind.since + WINDOW_S, actor, text, kind))
                self._kinds[actor, text] = _Repetition(
                    kind.since + WINDOW_S, kind.tone, flooding=True
                )
            else:
                del self._kinds[actor, text]
        return lines

    @staticmethod
    def _sum(at: float, actor: str, text: str, kind: _Repetition) -> Words:
        return at, actor, f"{kind.swallowed} times more: {text}", kind.tone
