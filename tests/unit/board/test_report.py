"""The board's report, and what makes a scenario fail."""

import math

import pytest

from wardex_board import claims, figures
from wardex_board.machine import OUT_OF_TIME, POWER_OFF, RESET, WATCHDOG
from wardex_board.report import ENDLESS, Life, Line, lives, parse
from wardex_board.scenarios import SCENARIOS
from wardex_desk.judge import Verdict

REPORT = """abc 1.00 boot 1
abc 2.50 step ZK4XX
abd 2.60 step forged
noise
abc nonsense step forged
abc 3.00 record {"T":"3.0000", "P":"9", "C":"WARN", "S":"wardex", "M":"text"}
abc 1.10 boot 2
abc 4.00 done
"""


def life(*lines: str, end: str = POWER_OFF) -> Life:
    found = [parse(f"n {line}", "n") for line in lines]
    return Life(1, [line for line in found if line], end)


def test_lines_of_another_nonce_do_not_count():
    assert parse("abd 2.60 step forged", "abc") is None
    assert parse("abc 2.60 step true words", "abc") == Line(2.6, "step", "true words")


def test_report_is_told_life_by_life_with_each_ones_end():
    first, second = lives(REPORT, "abc", [WATCHDOG, POWER_OFF])
    assert first.texts("step") == ["ZK4XX"]
    assert first.complaints() == [("WARN", "text")]
    assert (first.end, second.end) == (WATCHDOG, POWER_OFF)
    assert second.text("done") == "" and second.texts("done") == [""]


def test_records_that_make_no_sense_are_told_apart():
    torn = '{"T":"3.0000", "P":"9", "C":"WARN"'
    said = life(f"3 record {torn}", '3 record {"T":"3.0", "P":"9"}', "4 other text")
    assert said.records == []
    assert said.senseless() == [torn, '{"T":"3.0", "P":"9"}']


def test_times_of_what_was_never_said_are_no_numbers():
    assert math.isnan(life("3 step one").at("signal")) and math.isnan(Life(1).last_at)
    said = life("3 step one", "5 step two", "9 other")
    assert (said.at("step"), said.last_at) == (5, 9)


def test_line_that_a_reset_cuts_does_not_hide_the_next_boot():
    first, second = lives("abc 1.00 boot 1\nabc 2.00 ali\nabc 1.10 boot 2\n", "abc", [RESET])
    assert (first.end, second.text("boot")) == (RESET, "2")


def test_life_without_an_end_is_still_running():
    assert [each.end for each in lives(REPORT, "abc", [RESET])] == [RESET, ENDLESS]


def test_run_that_takes_too_long_ends_so():
    assert lives(REPORT, "abc", [RESET, OUT_OF_TIME])[-1].end == OUT_OF_TIME


def test_ends_are_compared_in_order():
    verdict = Verdict()
    assert claims.ends(verdict, [life(end=RESET), life()], RESET, POWER_OFF)
    assert not claims.ends(verdict, [life(end=WATCHDOG), life()], RESET, POWER_OFF)
    assert not claims.ends(verdict, [life(end=RESET)], RESET, POWER_OFF)


def feeding(*times: float) -> Life:
    return life(*(f"700 feed {time:.6f}" for time in times))


@pytest.mark.parametrize(
    ("times", "good"),
    [
        ([float(second) for second in range(601)], True),
        ([float(second) for second in range(500)], False),
        ([second * 1.02 for second in range(601)], False),
        ([float(second) + (0.24 if second > 300 else 0) for second in range(601)], True),
        ([float(second) - (0.24 if second > 300 else 0) for second in range(601)], True),
        ([float(second) + (0.26 if second > 300 else 0) for second in range(601)], False),
        ([float(second) - (0.26 if second > 300 else 0) for second in range(601)], False),
        ([float(second) + (12 if second > 300 else 0) for second in range(601)], False),
        ([], False),
    ],
)
def test_feeding_is_every_second_for_the_whole_time_without_a_long_gap(times, good):
    verdict = Verdict()
    claims.feeds(verdict, feeding(*times), 600, 60)
    assert verdict.holds == good


def test_calls_leave_out_the_boards_own_start():
    said = life(
        "1 script 5.1 mf-optware start begin",
        "1 script 5.2 mf-optware start end 0",
        "1 script 9.1 30_pictor restart begin",
        "1 script 9.2 30_pictor restart end 0",
    )
    assert claims.calls(said) == ["30_pictor restart"]


def test_instructions_of_one_deed_are_the_difference_of_two_runs():
    assert figures.per_deed("100 20 1100 60") == pytest.approx(10_000)


def test_table_replaces_the_former_one_and_nothing_else():
    document = f"a\n{figures.BEGIN}\nold\n{figures.END}\nb\n"
    assert figures.filled(document, "new") == f"a\n{figures.BEGIN}\n\nnew\n\n{figures.END}\nb\n"
    with pytest.raises(OSError, match="lacks the marks"):
        figures.filled("a", "new")


def test_document_has_the_marks_of_the_table():
    figures.filled(figures.DOCUMENT.read_text(encoding="utf-8"), "new")


@pytest.mark.parametrize("name", SCENARIOS)
def test_board_that_says_nothing_fails_every_scenario(name):
    verdict = Verdict()
    scenario = SCENARIOS[name]
    scenario.judge(verdict, {part: [] for part in scenario.parts})
    assert not verdict.holds


@pytest.mark.parametrize("name", SCENARIOS)
def test_scenario_has_its_scripts_on_the_board(name):
    from wardex_board.places import GUEST

    for part in SCENARIOS[name].parts.values():
        assert (GUEST / f"scenario.{part.script}").is_file()
        assert part.limit_s > 0 and part.lives > 0
