"""Which results meet which goals."""

from pathlib import Path

import pytest

from wardex_bench.row import (
    Context,
    Result,
    Row,
    Unmeasured,
    ours_at_most,
    ratio_at_least,
    ratio_at_most,
)


def verdict(goal, result):
    return Row("a row", "instr", goal, lambda context: result).judged(result).met


@pytest.mark.parametrize(
    "goal, result, met",
    [
        (ours_at_most(45), Result(45.0), True),
        (ours_at_most(45), Result(45.1), False),
        (ours_at_most(45), Result(None, ratio=1.0), False),
        (ratio_at_most(1.3), Result(1, 1, 1.3), True),
        (ratio_at_most(1.3), Result(1, 1, 1.301), False),
        (ratio_at_most(1.3), Result(1), False),
        (ratio_at_least(1.1), Result(1, 1, 1.1), True),
        (ratio_at_least(1.1), Result(1, 1, 1.099), False),
        (ratio_at_least(1.1), Result(1), False),
        (None, Result(1), None),
    ],
)
def test_the_limit_itself_meets_the_goal_and_nothing_beyond_does(goal, result, met):
    assert verdict(goal, result) is met


def test_what_is_too_noisy_meets_no_goal():
    assert verdict(ratio_at_most(1.3), Result(1, 1, 1.0, noisy=True)) is False


def test_goals_say_their_limit():
    assert ours_at_most(5500).text == "<= 5500"
    assert ours_at_most(2, "1 write, 1 read").text == "1 write, 1 read"
    assert ratio_at_most(1.3).text == "<= 1.30x"
    assert ratio_at_least(1.1).text == ">= 1.10x"


def context(short, programs=Path("/nowhere")):
    return Context(programs, Path("/nowhere/wardex"), Path("/nowhere"), short, lambda words: None)


def test_a_short_run_has_few_rounds_and_repetitions_but_some():
    assert context(short=False).rounds() >= 9
    assert context(short=True).rounds() < 9
    assert context(short=False).scaled(1000) == 1000
    assert context(short=True).scaled(1000) == 50
    assert context(short=True).scaled(1) == 1


def test_a_program_that_is_not_built_is_named(tmp_path):
    (tmp_path / "there").touch()
    assert context(False, tmp_path).program("there") == tmp_path / "there"
    with pytest.raises(Unmeasured, match="absent is not built"):
        context(False, tmp_path).program("absent")
