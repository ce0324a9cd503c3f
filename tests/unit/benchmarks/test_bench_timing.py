"""What the rounds of a comparison say."""

from pathlib import Path

import pytest

from wardex_bench import timing
from wardex_bench.row import Context


def context(short=False):
    return Context(Path("/p"), Path("/d"), Path("/s"), short, lambda words: None)


class Sides:
    """Two sides with given figures, one after the other; notes who was asked when."""

    def __init__(self, ours, yardstick):
        self.figures = {"ours": ours, "yardstick": yardstick}
        self.asked = []

    def side(self, name):
        def answer():
            number = self.asked.count(name)
            self.asked.append(name)
            return self.figures[name][number % len(self.figures[name])]

        return answer

    def compared(self, short=False, pieces=1):
        return timing.compare(context(short), self.side("ours"), self.side("yardstick"), pieces)


def test_interval_of_nine_rounds_leaves_out_one_at_each_end():
    assert timing.interval([5, 1, 2, 3, 4, 9, 8, 7, 6]) == (2, 8)


def test_interval_of_fifteen_rounds_leaves_out_three_at_each_end():
    assert timing.interval(range(15)) == (3, 11)


def test_interval_of_few_rounds_is_all_of_them():
    assert timing.interval([3, 1]) == (1, 3)
    assert timing.interval([3]) == (3, 3)


def test_ratio_is_taken_round_by_round():
    # The machine slows down threefold in the middle: both sides do.
    comparison = timing.judged([2.0, 2.0, 6.0, 6.0, 6.0], [1.0, 1.0, 3.0, 3.0, 3.0])
    assert comparison.ratio == 2.0
    assert (comparison.ours, comparison.yardstick, comparison.rounds) == (6.0, 3.0, 5)
    assert comparison.scatter == 0.0


@pytest.mark.parametrize("half_width, noisy", [(0.09, False), (0.11, True)])
def test_scatter_beyond_a_tenth_is_noise(half_width, noisy):
    comparison = timing.judged([1.0 - half_width, 1.0, 1.0 + half_width], [1.0] * 3)
    assert comparison.scatter == pytest.approx(half_width)
    assert comparison.noisy is noisy
    assert comparison.result().noisy is noisy
    assert ("machine too noisy to judge" in comparison.result().note) is noisy


def test_result_tells_uncertainty_and_note():
    result = timing.judged([3.0] * 9, [2.0] * 9).result("both on one processor")
    assert (result.ours, result.yardstick, result.ratio) == (3.0, 2.0, 1.5)
    assert result.note == "both on one processor; +-0.0 % in 9 rounds"


def test_each_round_asks_both_sides_once_in_changing_order():
    sides = Sides([1.0], [1.0])
    sides.compared()
    warm, rounds = sides.asked[:2], sides.asked[2:]
    assert sorted(warm) == ["ours", "yardstick"]
    pairs = [tuple(rounds[start : start + 2]) for start in range(0, len(rounds), 2)]
    assert len(pairs) == context().rounds()
    assert set(pairs) == {("ours", "yardstick"), ("yardstick", "ours")}


def test_small_pieces_take_more_rounds_but_for_a_short_run():
    sides = Sides([1.0], [1.0])
    assert sides.compared(pieces=4).rounds == context().rounds() * 4
    assert sides.compared(short=True, pieces=4).rounds == context(short=True).rounds()


def test_noise_earns_more_rounds_but_not_for_ever():
    sides = Sides([1.0, 3.0], [1.0])
    comparison = sides.compared()
    assert comparison.noisy
    assert comparison.rounds == context().rounds() * timing.PATIENCE


def test_short_run_does_not_wait_for_quiet():
    sides = Sides([1.0, 9.0], [1.0])
    assert sides.compared(short=True).rounds == context(short=True).rounds()
