"""The check that puts sources together for clang-tidy: nothing is lost, and told where it stands."""

import json
import subprocess
from pathlib import Path

import pytest

PROGRAM = Path(__file__).resolve().parents[3] / ".ci/checks/tidy.py"
CLEAN = "int twice(int value)\n{\n    return value + value;\n}\n"
# Only found by following the paths through the function.
FAULTY = """#include "own.h"
int first(int value)
{
    int* pointer = nullptr;
    return value > kOwn ? *pointer : 1;
}
"""
SAME_NAMES = (
    "namespace\n{{\nconst int kSecret = {0};\n}}\nint secret{0}()\n{{\n    return kSecret;\n}}\n"
)


@pytest.fixture(name="tree")
def _tree(tmp_path):
    """A folder whose sources are compiled alike."""
    (tmp_path / ".clang-tidy").write_text("Checks: '-*,clang-analyzer-*'\nWarningsAsErrors: '*'\n")
    (tmp_path / "sources").mkdir()
    (tmp_path / "build").mkdir()
    return tmp_path


def look(tree, **sources):
    """What the check says of sources, and its exit status; paths below the sources."""
    entries, paths = [], []
    for name, text in sources.items():
        path = tree / f"sources/{name}.cpp"
        path.write_text(text)
        command = f"c++ -std=c++17 -o {name}.o -c {path}"
        entries.append({"directory": str(tree), "command": command, "file": str(path)})
        paths.append(path)
    (tree / "build/compile_commands.json").write_text(json.dumps(entries))
    outcome = subprocess.run(
        [PROGRAM, "--build", "build", *paths],
        cwd=tree,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
    )
    return outcome.returncode, outcome.stdout.replace(f"{tree}/sources/", "")


def test_finding_is_told_with_the_file_and_line_that_it_is_from(tree):
    (tree / "sources/own.h").write_text("inline constexpr int kOwn = 3;\n")
    status, output = look(tree, clean=CLEAN, faulty=FAULTY)
    assert status == 1
    assert "faulty.cpp:5:27: error: Dereference of null pointer" in output
    assert "batch" not in output.replace("1 batches", "")
    assert output.splitlines()[-1] == "tidy: 2 files in 1 batches"


def test_nothing_is_found_in_clean_sources(tree):
    assert look(tree, clean=CLEAN) == (0, "tidy: 1 files in 1 batches\n")


def test_sources_that_do_not_compile_together_are_looked_at_one_by_one(tree):
    (tree / "sources/own.h").write_text("inline constexpr int kOwn = 3;\n")
    sources = {"one": SAME_NAMES.format(1), "two": SAME_NAMES.format(2)}
    assert look(tree, **sources) == (0, "tidy: 2 files in 1 batches\n")
    status, output = look(tree, **sources, faulty=FAULTY)
    assert status == 1
    assert output.count("error:") == 1 and "faulty.cpp:5:27: error:" in output


def test_source_that_the_build_does_not_compile_is_refused(tree):
    look(tree, clean=CLEAN)
    outcome = subprocess.run(
        [PROGRAM, "--build", tree / "build", tree / "sources/other.cpp"],
        stderr=subprocess.PIPE,
        text=True,
    )
    assert outcome.returncode == 1
    assert outcome.stderr == f"tidy: the build does not compile {tree}/sources/other.cpp\n"


def test_build_of_another_tree_is_refused(tree):
    look(tree, clean=CLEAN)
    outcome = subprocess.run(
        [PROGRAM, "--build", tree / "build"], stderr=subprocess.PIPE, text=True
    )
    assert outcome.returncode == 1
    assert outcome.stderr == f"tidy: {tree}/build compiles none of the files\n"
