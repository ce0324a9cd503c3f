"""The table, for people, for machines and for the documents."""

import datetime
import json

import pytest

from wardex_bench import document, table
from wardex_bench.row import Result, Row, ours_at_most, ratio_at_most
from wardex_bench.table import Line


def line(goal, result, name="masked call", unit="ns"):
    row = Row(name, unit, goal, lambda context: result)
    return Line(row, row.judged(result))


MET = line(ratio_at_most(1.3), Result(6.95, 6.27, 1.108, "+-1.6 % in 15 rounds"))
NOT_MET = line(ours_at_most(5500), Result(34943.0), "written call", "instr")
NOISY = line(ratio_at_most(1.3), Result(6.95, 6.27, 1.108, noisy=True))
INFORMATION = line(None, Result(2.0), "for information", "calls")
FAILED = Line(MET.row, None, "not measured: no valgrind")
NO_MATTER = Line(INFORMATION.row, None, "not measured: no namespaces", True)


@pytest.mark.parametrize(
    "value, text",
    [
        (None, "-"),
        (34943.4, "34 943"),
        (1234567.0, "1 234 567"),
        (1000.0, "1 000"),
        (999.6, "1 000"),
        (112.04, "112"),
        (68.0, "68"),
        (44.06, "44.1"),
        (6.947, "6.95"),
        (0.0123, "0.0123"),
        (-3.0, "-3"),
    ],
)
def test_figures_show_what_counts(value, text):
    assert table.figure(value) == text


def test_figure_carries_its_unit():
    assert table.figure(6.947, "ns") == "6.95 ns"
    assert table.figure(None, "ns") == "-"


@pytest.mark.parametrize(
    "each, verdict, passed",
    [
        (MET, "yes", True),
        (NOT_MET, "NO", False),
        (NOISY, "noisy", False),
        (INFORMATION, "-", True),
        (FAILED, "FAILED", False),
        (NO_MATTER, "FAILED", True),
    ],
)
def test_verdicts(each, verdict, passed):
    assert table.verdict(each) == verdict
    assert each.passed is passed


def test_table_has_columns_and_remarks_below():
    assert table.text([MET, NOT_MET, FAILED]).splitlines() == [
        "metric        ours          yardstick  ratio  goal      met",
        "------------  ------------  ---------  -----  --------  ------",
        "masked call   6.95 ns       6.27 ns    1.11x  <= 1.30x  yes",
        "    +-1.6 % in 15 rounds",
        "written call  34 943 instr  -          -      <= 5500   NO",
        "masked call   -             -          -      <= 1.30x  FAILED",
        "    not measured: no valgrind",
    ]


def test_json_has_figures_in_full_and_the_machine():
    read = json.loads(table.as_json([MET, NOT_MET, FAILED, INFORMATION]))
    assert sorted(read["machine"]) == ["compiler", "memory", "processor", "system"]
    assert read["rows"][0] == {
        "metric": "masked call",
        "unit": "ns",
        "ours": 6.95,
        "yardstick": 6.27,
        "ratio": 1.108,
        "goal": "<= 1.30x",
        "met": True,
        "noisy": False,
        "remarks": "+-1.6 % in 15 rounds",
    }
    assert [row["met"] for row in read["rows"]] == [True, False, False, None]
    assert read["rows"][2]["remarks"] == "not measured: no valgrind"
    assert read["rows"][3]["goal"] is None


def test_document_gets_the_new_table_between_its_marks():
    text = f"# Performance\n\n{document.BEGIN}\nold table\n{document.END}\n\nAfter.\n"
    day = datetime.date(2026, 11, 21)
    filled = document.filled(text, [MET, NOT_MET, INFORMATION], day)
    assert filled.startswith(f"# Performance\n\n{document.BEGIN}\n\nRun of 2026-11-21: 1 of 2 ")
    assert filled.endswith(f"\n\n{document.END}\n\nAfter.\n")
    assert "old table" not in filled
    assert (
        "| masked call | 6.95 ns | 6.27 ns | 1.11x | <= 1.30x | yes | +-1.6 % in 15 rounds |"
        in filled
    )
    assert document.filled(filled, [MET, NOT_MET, INFORMATION], day) == filled


@pytest.mark.parametrize("lost", [document.BEGIN, document.END])
def test_document_without_a_mark_is_left_alone(lost):
    text = f"{document.BEGIN}\n{document.END}\n".replace(lost, "")
    with pytest.raises(document.DocumentError, match="lacks the marks"):
        document.filled(text, [MET], datetime.date(2026, 11, 21))


def test_the_performance_document_has_the_marks():
    text = document.PATH.read_text(encoding="utf-8")
    assert 0 < text.find(document.BEGIN) < text.find(document.END)
