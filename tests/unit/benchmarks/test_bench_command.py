"""The command ./bench: words, exit status, what goes where."""

import json
import re
import shlex
import signal

import pytest

from wardex_desk import ending

from wardex_bench import building, cli, document, rows
from wardex_bench.building import BuildError
from wardex_bench.row import NotHere, Result, Row, Unmeasured, ours_at_most


def row(name, ours, goal=ours_at_most(10)):
    def measure(context):
        assert context.scratch.is_dir()
        context.progress("step")
        if isinstance(ours, Exception):
            raise ours
        return Result(ours)

    return Row(name, "instr", goal, measure)


@pytest.fixture(name="bench")
def a_bench(monkeypatch):
    """Runs the command over rows of ours, without a build; answers the exit status."""
    handlers = {number: signal.getsignal(number) for number in ending.ENDS}
    monkeypatch.setattr(building, "build", lambda: None)

    def run(all_rows, *words):
        monkeypatch.setattr(rows, "ALL", all_rows)
        return cli.main(words)

    yield run
    for number, handler in handlers.items():
        signal.signal(number, handler)


@pytest.mark.parametrize(
    "figures, status",
    [([10], 0), ([11], 1), ([10, 11], 1), ([10, Unmeasured("lost")], 1), ([OSError("gone")], 1)],
)
def test_status_is_good_only_if_every_goal_is_met(bench, figures, status):
    assert bench([row(f"row {figure}", figure) for figure in figures]) == status


def test_rows_without_goal_do_not_count(bench):
    assert bench([row("one", 99, None), row("two", Unmeasured("lost"), None)]) == 0


@pytest.mark.parametrize(
    "figure, status", [(10, 0), (11, 0), (Unmeasured("lost"), 1), (NotHere("no boxes"), 0)]
)
def test_short_run_only_asks_whether_rows_can_be_measured(bench, figure, status, capsys):
    assert bench([row("one", figure)], "--short") == status
    assert "the figures only show that the rows work" in capsys.readouterr().err


def test_table_and_progress_go_different_ways(bench, capsys):
    assert bench([row("one", 10), row("two", 11)]) == 1
    said = capsys.readouterr()
    assert "one     10 instr" in said.out and "[1/2]" not in said.out
    assert "[1/2] one: yes (0.0 s)\n[2/2] two: NO (0.0 s)\n" in said.err


def test_a_row_that_cannot_be_measured_says_why_and_the_others_go_on(bench, capsys):
    assert bench([row("one", Unmeasured("no valgrind")), row("two", 10)], "--json") == 1
    read = json.loads(capsys.readouterr().out)["rows"]
    assert read[0]["remarks"] == "not measured: no valgrind"
    assert read[1]["met"] is True


def test_pattern_chooses_rows(bench, capsys):
    assert bench([row("masked call", 11), row("start", 10)], "^st") == 0
    assert "masked" not in capsys.readouterr().out


def test_list_prints_names_and_measures_nothing(bench, capsys):
    assert bench([row("one", OSError("measured")), row("two", 10)], "--list") == 0
    assert capsys.readouterr().out == "one\ntwo\n"


@pytest.mark.parametrize(
    "words, complaint",
    [
        (["("], "'(' is no regular expression: "),
        (["nothing"], "no row matches 'nothing': see ./bench --list"),
        (["--short", "--write-docs"], "only a whole run goes into the documents"),
        (["--write-docs", "one"], "only a whole run goes into the documents"),
    ],
)
def test_wrong_words_are_told(bench, capsys, words, complaint):
    assert bench([row("one", 10)], *words) == 2
    assert capsys.readouterr().err.startswith(f"bench: {complaint}")


def test_build_that_fails_is_told(bench, capsys, monkeypatch):
    def refuse():
        raise BuildError("no compiler")

    monkeypatch.setattr(building, "build", refuse)
    assert bench([row("one", 10)]) == 1
    assert capsys.readouterr().err.endswith("bench: no compiler\n")


def test_whole_run_goes_into_the_document(bench, monkeypatch):
    written = []
    monkeypatch.setattr(document, "write", written.extend)
    assert bench([row("one", 10), row("two", 11)], "--write-docs") == 1
    assert [line.row.name for line in written] == ["one", "two"]


def shown():
    """The words after ./bench on every line of a fenced block in the documents."""
    for name in ("README.md", "docs/performance.md", "docs/development.md"):
        text = (building.REPOSITORY / name).read_text(encoding="utf-8")
        yield from re.findall(r"^\./bench *(.*)$", text, re.MULTILINE)


@pytest.mark.parametrize("words", sorted(set(shown())))
def test_command_in_a_document_is_taken(bench, words):
    assert bench(rows.ALL, *shlex.split(words, comments=True), "--list") == 0


def test_names_of_the_real_rows_are_unique():
    names = [each.name for each in rows.ALL]
    assert len(names) == len(set(names)) > 0
