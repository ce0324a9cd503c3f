#!/usr/bin/python3
"""What of the product's own code the tests ran, as counted by a build of the preset `coverage`.

    coverage.py [--build DIR] [--missed]

Prints lines and branches per room and the whole; --missed adds each line and branch that nothing
ran. Fails below the limits, and for every missed line of the supervisor whose reason UNCOVERED does
not give. The operator's tools count for the limits only: what they do not show harms no device.
"""

import argparse
import json
import os
import subprocess
import sys
import tomllib
from collections import defaultdict
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
ROOMS = ("logger", "quorl", "src", "identification", "tools")
TOOLS_ROOM = "tools/"
UNCOVERED = ROOT / "tests/data/uncovered.toml"
LINES_LIMIT = 95.0
BRANCHES_LIMIT = 90.0
LLVM = Path("/usr/lib/llvm-14/bin")


@dataclass
class Source:
    """One file: {line: how often}, {(line, column): (true, false)}."""

    lines: dict[int, int] = field(default_factory=dict)
    branches: dict[tuple[int, int], tuple[int, int]] = field(default_factory=dict)

    def missed_lines(self) -> list[int]:
        return sorted(line for line, count in self.lines.items() if count == 0)

    def ways(self) -> list[tuple[int, str]]:
        """Each way out of each condition that was never taken."""
        found = []
        for (line, column), (yes, no) in sorted(self.branches.items()):
            found += [(line, f"never true at {column}")] if yes == 0 else []
            found += [(line, f"never false at {column}")] if no == 0 else []
        return found

    def line_figures(self) -> tuple[int, int]:
        return len(self.lines) - len(self.missed_lines()), len(self.lines)

    def branch_figures(self) -> tuple[int, int]:
        return 2 * len(self.branches) - len(self.ways()), 2 * len(self.branches)


def export(build: Path) -> dict[str, Source]:
    """The counts of all programs together."""
    counts = sorted((build / "counts").glob("*.profraw"))
    if not counts:
        sys.exit(
            f"coverage: nothing was counted in {build}/counts; run the tests of that build first"
        )
    merged = build / "counts.profdata"
    subprocess.run([LLVM / "llvm-profdata", "merge", "-sparse", "-o", merged, *counts], check=True)
    programs = [path for path in sorted((build / "bin").iterdir()) if is_program(path)]
    words = [LLVM / "llvm-cov", "export", "-instr-profile", merged, programs[0]]
    words += [word for path in programs[1:] for word in ("-object", path)]
    answer = subprocess.run(words, check=True, capture_output=True)
    files = json.loads(answer.stdout)["data"][0]["files"]
    named = {os.path.relpath(each["filename"], ROOT): each for each in files}
    # Neither the tests nor what is generated.
    return {name: read(each) for name, each in named.items() if name.split("/")[0] in ROOMS}


def is_program(path: Path) -> bool:
    if not path.is_file() or not os.access(path, os.X_OK):
        return False
    sections = subprocess.run(["readelf", "-SW", path], capture_output=True, text=True).stdout
    return "__llvm_covmap" in sections


def read(exported: dict) -> Source:
    """A file's lines as `llvm-cov show` counts them, and its conditions."""
    segments = exported["segments"]
    source = Source(lines=lines_of(segments))
    for line, column, _, _, yes, no, *_ in exported.get("branches", []):
        reached = max((each for each in segments if (each[0], each[1]) <= (line, column)))[2]
        if yes == no == 0 < reached:
            continue  # Decided by the compiler.
        before = source.branches.get((line, column), (0, 0))
        source.branches[line, column] = (before[0] + yes, before[1] + no)
    return source


def lines_of(segments: list[list]) -> dict[int, int]:
    """{line: count} from the places (line, column, count, has a count, starts a region, is a gap)
    where the count changes: the highest one that starts on a line, or else the one that reaches it.
    """
    starts = defaultdict(list)
    for segment in segments:
        starts[segment[0]].append(segment)
    lines: dict[int, int] = {}
    reaching = None
    for line in range(segments[0][0], segments[-1][0] + 1) if segments else ():
        own = [each for each in starts[line] if each[3] and each[4] and not each[5]]
        begins_unmapped = starts[line] and not starts[line][0][3] and starts[line][0][4]
        is_mapped = bool(own) or (reaching is not None and reaching[3] and not begins_unmapped)
        if is_mapped:
            counts = [each[2] for each in own]
            counts += [reaching[2]] if reaching is not None and reaching[3] else []
            lines[line] = max(counts)
        reaching = starts[line][-1] if starts[line] else reaching
    return lines


def percent(ran: int, all_there: int) -> float:
    return 100.0 * ran / all_there if all_there else 100.0


def table(sources: dict[str, Source]) -> list[str]:
    """A row per room, and one for the whole."""
    rows = ["room            lines                  branches"]
    for room in (*ROOMS, ""):
        mine = [source for name, source in sources.items() if name.startswith(room)]
        rows.append(f"{room or 'all':<16}" + "".join(f"{cell:<23}" for cell in figures(mine)))
    return rows


def figures(sources: list[Source]) -> tuple[str, str]:
    ran, lines = (sum(each) for each in zip(*(source.line_figures() for source in sources)))
    taken, ways = (sum(each) for each in zip(*(source.branch_figures() for source in sources)))
    return (
        f"{percent(ran, lines):.1f} % ({ran} of {lines})",
        f"{percent(taken, ways):.1f} % ({taken} of {ways})",
    )


def below_limits(sources: dict[str, Source]) -> list[str]:
    complaints = []
    for what, limit, counted in (
        ("lines", LINES_LIMIT, [source.line_figures() for source in sources.values()]),
        ("branches", BRANCHES_LIMIT, [source.branch_figures() for source in sources.values()]),
    ):
        reached = percent(sum(ran for ran, _ in counted), sum(there for _, there in counted))
        if reached < limit:
            complaints.append(f"only {reached:.2f} % of the {what} ran; at least {limit:g} % must")
    return complaints


def without_reason(sources: dict[str, Source], reasons: list[dict]) -> list[str]:
    """A complaint for each missed line without a reason, and for each reason without a line."""
    complaints = []
    given = defaultdict(set)
    for entry in reasons:
        texts = {line.strip() for line in (ROOT / entry["file"]).read_text("utf-8").splitlines()}
        for line in entry["lines"]:
            given[entry["file"]].add(line)
            if line not in texts:
                complaints.append(f"{entry['file']}: no line says '{line}' any more")
    for name, source in sources.items():
        if name.startswith(TOOLS_ROOM):
            continue
        texts = (ROOT / name).read_text("utf-8").splitlines()
        for number in source.missed_lines():
            text = texts[number - 1].strip()
            if text not in given[name] and text.strip("{};"):
                complaints.append(f"{name}:{number}: never ran, and no reason is given: {text}")
    return complaints


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=Path, default=ROOT / "build/coverage")
    parser.add_argument("--missed", action="store_true", help="print what nothing ran")
    options = parser.parse_args()
    sources = export(options.build)
    if options.missed:
        for name, source in sources.items():
            found = [(line, "never ran") for line in source.missed_lines()] + source.ways()
            for line, what in sorted(found):
                print(f"{name}:{line}: {what}")
    print(*table(sources), sep="\n")
    reasons = tomllib.loads(UNCOVERED.read_text("utf-8"))["uncovered"]
    complaints = below_limits(sources) + without_reason(sources, reasons)
    for complaint in complaints:
        print(f"coverage: {complaint}", file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
