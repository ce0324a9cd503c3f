#!/usr/bin/python3
"""Makes the claims of pytest files tests of ctest: each one by itself, or a file's together.

    pytest_claims.py collect NAME OUTPUT LABEL TIMEOUT FOLDER claim|file
                                writes add_test() calls for ctest
    pytest_claims.py run CLAIM  runs one claim, or a file of them

Exit status of a run: pytest's own, or 77 when the claim was skipped, which ctest shows as Skipped.
"""

import contextlib
import io
import sys
from pathlib import Path

import pytest

SKIPPED = 77
NOTHING_COLLECTED = 5
REPOSITORY = Path(__file__).resolve().parents[2]
OPTIONS = ["-p", "no:cacheprovider", "-q", "--no-header", f"--rootdir={REPOSITORY}"]


class Claims:
    """Notes what pytest finds and how it ends."""

    def __init__(self):
        self.found = []
        self.outcomes = set()

    def pytest_collection_finish(self, session):
        self.found = [item.nodeid for item in session.items]

    def pytest_runtest_logreport(self, report):
        if report.when == "call" or not report.passed:
            self.outcomes.add(report.outcome)


def collect(name, output, label, timeout, folder, unit):
    """Writes the file that ctest includes; the exit status is pytest's."""
    claims = Claims()
    words = io.StringIO()
    with contextlib.redirect_stdout(words):
        status = pytest.main([*OPTIONS, "--collect-only", "-q", folder], [claims])
    if status not in (0, NOTHING_COLLECTED):
        print(words.getvalue(), file=sys.stderr)
    if status not in (0, NOTHING_COLLECTED):
        return status
    lines = []
    found = claims.found
    if unit == "file":
        found = list(dict.fromkeys(claim.partition("::")[0] for claim in found))
    for claim in found:
        path, _, words = claim.partition("::")
        title = f"{name}/{Path(path).stem.removeprefix('test_')}"
        if words:
            title += f".{words.replace('::', '.')}"
        lines.append(
            f'add_test([==[{title}]==] "{sys.executable}" "{__file__}" run [==[{claim}]==])'
        )
        lines.append(
            f"set_tests_properties([==[{title}]==] PROPERTIES LABELS {label} TIMEOUT {timeout}"
            f' SKIP_RETURN_CODE {SKIPPED} WORKING_DIRECTORY "{REPOSITORY}"'
            f' ENVIRONMENT "${{{name}_ENVIRONMENT}}")'
        )
    Path(output).write_text("\n".join(lines) + "\n", encoding="utf-8")
    return 0


def run(claim):
    """Runs one claim and answers the exit status for ctest."""
    claims = Claims()
    status = pytest.main([*OPTIONS, "-rs", claim], [claims])
    return SKIPPED if status == 0 and claims.outcomes == {"skipped"} else status


if __name__ == "__main__":
    deed, *arguments = sys.argv[1:]
    sys.exit({"collect": collect, "run": run}[deed](*arguments))
