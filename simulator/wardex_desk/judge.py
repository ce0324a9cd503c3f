"""The verdict on a story: claims, each with what was seen when it does not hold.

Nothing here knows what the simulator was told to do; claims look at the journals' events only.
"""

from __future__ import annotations

from collections.abc import Iterable
from dataclasses import dataclass, field

# More would hide the point.
EVIDENCE_LINES = 12


@dataclass(frozen=True)
class Finding:
    """One claim and whether it holds. `holds` is None for what cannot be shown on this machine.

    details belong to the claim, evidence to its failure.
    """

    claim: str
    holds: bool | None
    evidence: tuple[str, ...] = ()
    details: tuple[str, ...] = ()

    @property
    def word(self) -> str:
        """PASS, FAIL or SKIP."""
        if self.holds is None:
            return "SKIP"
        return "PASS" if self.holds else "FAIL"


@dataclass
class Verdict:
    """Collects the findings of one story."""

    findings: list[Finding] = field(default_factory=list)

    def claim(
        self,
        text: str,
        holds: bool,
        evidence: Iterable[str] = (),
        details: Iterable[str] = (),
    ) -> bool:
        """Notes a claim; the evidence is kept when it fails. Answers whether it holds."""
        lines = list(evidence) if not holds else []
        if len(lines) > EVIDENCE_LINES:
            left = len(lines) - EVIDENCE_LINES
            lines = lines[:EVIDENCE_LINES] + [f"... and {left} more"]
        self.findings.append(Finding(text, holds, tuple(lines), tuple(details)))
        return holds

    def equal(self, text: str, expected: object, seen: object) -> bool:
        """Claims that two things are the same; both are shown when they are not."""
        return self.claim(text, expected == seen, [f"expected: {expected}", f"seen:     {seen}"])

    def skip(self, text: str, reason: str) -> None:
        """Names something that cannot be shown here."""
        self.findings.append(Finding(f"{text}: {reason}", None))

    @property
    def holds(self) -> bool:
        """Whether there was a claim at all and none failed."""
        judged = [finding for finding in self.findings if finding.holds is not None]
        return bool(judged) and all(finding.holds for finding in judged)
