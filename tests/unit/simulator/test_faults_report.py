"""The table of the faults, and its place in the document."""

from canned import Canned

from wardex_desk.faults_report import HEADING, Row, outcome, section, table, with_section

SURVIVED = Row("redis-killed", "Redis ends", True, "goes on", 2.014, 0.0)
SLOW = Row("script-hangs", "a script hangs", True, "goes on", 11.5, 10.25)
UNFED = Row("watchdog-missing", "no watchdog", True, "goes on", None, 0.0)


def test_row_tells_gap_and_scripts():
    assert table([SURVIVED, SLOW, UNFED]).splitlines()[2:] == [
        "| redis-killed | Redis ends | goes on | 2.01 s | |",
        "| script-hangs | a script hangs | goes on | 11.50 s | 10.25 s |",
        "| watchdog-missing | no watchdog | goes on | - | |",
    ]


def test_figure_for_the_integrator_leaves_scripts_out():
    assert "was\n**2.0 s** (redis-killed)" in section([SLOW, SURVIVED, UNFED])


def test_figure_for_the_integrator_is_twice_what_the_rules_allow():
    text = section([SURVIVED])
    assert "The rules allow 14.6 s" in text
    assert "Give the watchdog **30 s," in text


def test_outcome_is_what_became_of_the_supervisor():
    assert outcome(Canned().lives()) == "goes on"
    assert outcome(Canned().supervisor_ends(101.0, 1).lives()) == "ends, status 1"
    killed = Canned().supervisor_ends(101.0, 137)
    killed.events.extend(Canned("watchdog", at=110.0).events)
    assert outcome(killed.lives()) == "reset"
    killed.events.extend(Canned("watchdog", at=120.0).events)
    assert outcome(killed.lives()) == "2 resets"


def test_section_is_added_at_the_end():
    assert with_section("# A\n", f"{HEADING}\n\nnew\n") == f"# A\n\n{HEADING}\n\nnew\n"


def test_section_takes_the_place_of_the_former_one():
    before = f"# A\n\n{HEADING}\n\nold\n\n## B\n\nb\n"
    assert with_section(before, f"{HEADING}\n\nnew\n") == f"# A\n\n{HEADING}\n\nnew\n\n## B\n\nb\n"
