"""How mutants are applied and judged."""

import contextlib
import importlib.util
import sys
from pathlib import Path

import pytest

PROGRAM = Path(__file__).resolve().parents[2] / "mutants/run.py"
SPEC = importlib.util.spec_from_file_location("mutants_run", PROGRAM)
run = importlib.util.module_from_spec(SPEC)
sys.modules[SPEC.name] = run
SPEC.loader.exec_module(run)

SOURCE = "int f()\n{\n    if (a > 3)\n    {\n        reset();\n    }\n}\n"


def mutant(**changes):
    fields = {
        "name": "limit",
        "file": "room/f.cpp",
        "old": "if (a > 3)",
        "new": "if (a >= 3)",
        "tests": "room_tests/Limit",
        "why": "it matters",
    }
    return run.Mutant(**(fields | changes))


@pytest.fixture
def tree(tmp_path):
    (tmp_path / "room").mkdir()
    (tmp_path / "room/f.cpp").write_text(SOURCE)
    (tmp_path / "tests").mkdir()
    (tmp_path / "tests/CMakeLists.txt").write_text("wardex_add_test(room_tests LABEL unit)\n")
    return tmp_path


class CannedCopy:
    """Builds anything; with a mutant the tests end as they are told to, without one green or red."""

    def __init__(self, *failures, red=()):
        self.failures = list(failures)
        self.red = list(red)
        self.is_changed = False

    def fill(self):
        pass

    configure = fill

    def make(self, program):
        pass

    def test(self, patterns, *options):
        return self.failures if self.is_changed else self.red

    @contextlib.contextmanager
    def changed(self, changed):
        self.is_changed = True
        yield
        self.is_changed = False


def test_a_line_is_changed_and_keeps_its_place():
    assert mutant().applied(SOURCE) == SOURCE.replace("    if (a > 3)\n", "    if (a >= 3)\n")


def test_a_line_without_a_successor_goes_and_the_others_keep_their_numbers():
    changed = mutant(old="reset();", new="").applied(SOURCE)
    assert changed == SOURCE.replace("        reset();\n", "\n")


def test_mutants_that_fit_have_no_complaints(tree):
    assert run.complaints([mutant(), mutant(name="reset", old="reset();", new="")], tree) == []


@pytest.mark.parametrize(
    "changes, complaint",
    [
        ({"old": "if (a > 4)"}, "the old line is not there: if (a > 4)"),
        ({"old": "a > 3"}, "the old line is not there: a > 3"),
        ({"new": "if (a > 3)"}, "changes nothing"),
        ({"why": ""}, "does not tell why it matters"),
        ({"file": "room/g.cpp"}, "room/g.cpp: No such file"),
        ({"tests": "other_tests/Limit"}, "there is no test program other_tests"),
        ({"tests": "Limit"}, "'Limit' does not begin with a program"),
    ],
)
def test_a_mutant_that_does_not_fit_is_told(tree, changes, complaint):
    told = run.complaints([mutant(**changes)], tree)
    assert len(told) == 1 and complaint in told[0]


def test_a_line_that_stands_there_twice_is_no_place(tree):
    (tree / "room/f.cpp").write_text(SOURCE + SOURCE)
    assert "stands there 2 times" in run.complaints([mutant()], tree)[0]


def test_a_name_is_given_once(tree):
    assert run.complaints([mutant(), mutant()], tree) == ["limit: is declared 2 times"]


@pytest.mark.parametrize(
    "tests, program",
    [
        ("room_tests/Limit", "room_tests"),
        ("model/seeds_from_1$", "wardex_model"),
        ("fuzz/log_record_corpus$", "log_record_fuzz"),
    ],
)
def test_tests_tell_their_program(tests, program):
    assert mutant(tests=tests).program == program


@pytest.mark.parametrize(
    "failures, verdict",
    [
        ([("room_tests/Limit.A", "Failed")], (run.KILLED, "room_tests/Limit.A")),
        ([("room_tests/Limit.A", "SEGFAULT")], (run.KILLED, "room_tests/Limit.A")),
        ([("room_tests/Limit.A", "Timeout")], (run.KILLED_BY_TIME, "room_tests/Limit.A")),
        (
            [("room_tests/Limit.A", "Timeout"), ("room_tests/Limit.B", "Failed")],
            (run.KILLED, "room_tests/Limit.B"),
        ),
        ([], (run.SURVIVED, "room_tests/Limit stayed green")),
    ],
)
def test_a_red_test_kills(failures, verdict):
    assert run.judge(CannedCopy(*failures), mutant()) == verdict


@pytest.mark.parametrize("end", ["Not Run", "Skipped"])
def test_a_test_that_did_not_run_judges_nothing(end):
    with pytest.raises(run.Trouble, match=end):
        run.judge(CannedCopy(("room_tests/Limit.A", end)), mutant())


def test_without_green_tests_on_the_unchanged_tree_nothing_is_killed():
    hunt = run.Hunt([mutant()])
    hunt.work(CannedCopy(("room_tests/Limit.A", "Failed"), red=[("room_tests/Limit.A", "Failed")]))
    assert [each.verdict for each in hunt.results] == [run.ERROR]
    assert "without any mutant room_tests/Limit.A" in hunt.results[0].detail


@pytest.mark.parametrize(
    "failures, status, figures",
    [
        ([("room_tests/Limit.A", "Failed")], 0, "killed: 1 (by time-out: 0); survived: 0"),
        ([("room_tests/Limit.A", "Timeout")], 0, "killed: 1 (by time-out: 1); survived: 0"),
        ([], 1, "killed: 0 (by time-out: 0); survived: 1; errors: 0"),
    ],
)
def test_a_survivor_fails_the_run(monkeypatch, capsys, tmp_path, failures, status, figures):
    monkeypatch.setattr(run, "Copy", lambda folder: CannedCopy(*failures))
    assert run.hunt([mutant()], 1, tmp_path) == status
    assert figures in capsys.readouterr().out


def test_summary_of_ctest_is_understood():
    told = (
        "The following tests FAILED:\n"
        "\t  3 - a_tests/A.B (Failed)\n"
        "\t 12 - a_tests/Rows/A.B/x  # GetParam() = f(1) (SEGFAULT)\n"
        "\t213 - a_tests/A.C (Timeout)\n"
    )
    assert run.not_passed(told) == [
        ("a_tests/A.B", "Failed"),
        ("a_tests/Rows/A.B/x", "SEGFAULT"),
        ("a_tests/A.C", "Timeout"),
    ]
