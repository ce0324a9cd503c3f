"""How runs of the board are played: several at once, judged in order, ended when told."""

import os
import subprocess
from pathlib import Path
from threading import Barrier

import pytest

from wardex_board import machine
from wardex_board.images import Images
from wardex_board.machine import OUT_OF_TIME, POWER_OFF, Run
from wardex_board.qmp import QmpError
from wardex_board.scenario import Part, Scenario, Stage, folder_for

BOUND_S = 20


def scenario(name: str, *parts: str, limit_s: float = 1) -> Scenario:
    def judge(verdict, told):
        verdict.equal(
            "what was said", [name] * len(told), [life[0].text("said") for life in told.values()]
        )

    return Scenario(name, "", {part: Part("script", 1, limit_s, {}) for part in parts}, judge)


@pytest.fixture(name="stage")
def _stage(tmp_path, monkeypatch) -> Stage:
    monkeypatch.setattr(machine, "prepare", lambda *_: None)
    return Stage(Images(tmp_path, tmp_path, tmp_path), tmp_path, tmp_path, lambda _: None)


def plays(monkeypatch, play, *said: str) -> None:
    """`play(folder, nonce, over)` stands in for the emulator, and answers how the life ended.

    said: further lines of the report, without the nonce.
    """

    def stand_in(folder: Path, _images, plan, tell, over) -> Run:
        nonce = plan.words["board.nonce"]
        (folder / "console").write_text("the last words\n")
        end = play(folder, nonce, over)
        lines = [
            f"{nonce} 1.00 boot 1",
            "forged 1.50 said other",
            f"{nonce} 2.00 said {folder.parent.name}",
            *(f"{nonce} {line}" for line in said),
        ]
        (folder / "report").write_text("\n".join(lines) + "\n")
        for line in lines:
            tell(line)
        return Run(folder, [end])

    monkeypatch.setattr(machine, "play", stand_in)


def test_scenarios_are_judged_in_their_order_by_their_own_nonce(stage, monkeypatch):
    nonces = []

    def play(_folder, nonce, _over):
        nonces.append(nonce)
        return POWER_OFF

    plays(monkeypatch, play)
    stories = [scenario("first", "a", "b"), scenario("second", "a", limit_s=100)]
    judged = list(stage.perform(stories, 2))
    assert [story.name for story, _, _ in judged] == ["first", "second"]
    assert all(verdict.holds for _, verdict, _ in judged)
    assert len(set(nonces)) == 3


def test_as_many_boards_run_at_once_as_wanted(stage, monkeypatch):
    both = Barrier(2)

    def play(*_):
        both.wait(BOUND_S)
        return POWER_OFF

    plays(monkeypatch, play)
    assert all(verdict.holds for _, verdict, _ in stage.perform([scenario("one", "a", "b")], 2))


def test_what_is_told_names_the_run_and_leaves_out_what_is_forged(stage, monkeypatch):
    told = []
    stage.tell = told.append
    plays(monkeypatch, lambda *_: POWER_OFF)
    list(stage.perform([scenario("one", "a")], 1))
    assert told == [
        "one, a: the board boots",
        "one, a: boot 1 (board: 1.00 s)",
        "one, a: said one (board: 2.00 s)",
    ]


def test_run_that_takes_too_long_fails_its_scenario_and_shows_the_console(stage, monkeypatch):
    plays(monkeypatch, lambda *_: OUT_OF_TIME)
    ((_, verdict, _),) = stage.perform([scenario("one", "a")], 1)
    (late,) = [finding for finding in verdict.findings if not finding.holds]
    assert "ends within 1 s" in late.claim and "the last words" in late.evidence


def failures(stage, *stories: Scenario) -> list[list[str]]:
    return [
        [finding.claim for finding in verdict.findings if not finding.holds]
        for _, verdict, _ in stage.perform(stories, 1)
    ]


@pytest.mark.parametrize(
    "trouble",
    [QmpError("it talks nonsense"), TimeoutError("it is silent"), OSError("it is gone")],
)
def test_run_that_cannot_go_on_fails_its_own_scenario_only(stage, monkeypatch, trouble):
    def play(folder, _nonce, _over):
        if folder.parent.name == "bad":
            raise trouble
        return POWER_OFF

    plays(monkeypatch, play)
    bad, good = stage.perform([scenario("bad", "a"), scenario("good", "a")], 1)
    assert good[1].holds
    first = next(finding for finding in bad[1].findings if not finding.holds)
    assert first.claim == "a: the emulator does its work"
    assert str(trouble) in first.evidence and "the last words" in first.evidence


def test_verdict_that_cannot_be_given_fails_its_own_scenario_only(stage, monkeypatch):
    def judge(_verdict, told):
        return told["a"][0].texts("never said")[0]

    plays(monkeypatch, lambda *_: POWER_OFF)
    bad = Scenario("bad", "", {"a": Part("script", 1, 1, {})}, judge)
    judged = list(stage.perform([bad, scenario("good", "a")], 1))
    assert [verdict.holds for _, verdict, _ in judged] == [False, True]
    (finding,) = [each for each in judged[0][1].findings if not each.holds]
    assert finding.claim == "what the board told can be judged"
    assert "IndexError" in finding.evidence[-1]


def test_boards_own_count_of_its_boots_is_that_of_its_lives(stage, monkeypatch):
    plays(monkeypatch, lambda *_: POWER_OFF, "1.00 boot 3")
    assert failures(stage, scenario("one", "a")) == [["a: the board counts its boots from 1 to 1"]]
    twice = Scenario("two", "", {"a": Part("script", 2, 1, {})}, lambda *_: None)
    assert failures(stage, twice) == [["a: the board counts its boots from 1 to 2"]]


def test_panic_fails_the_scenario(stage, monkeypatch):
    plays(monkeypatch, lambda *_: POWER_OFF)
    monkeypatch.setattr(
        Run, "console", ["[    9.1] Kernel panic - not syncing: Attempted to kill init!"]
    )
    assert failures(stage, scenario("one", "a")) == [["a: the kernel never panics"]]


def test_record_that_makes_no_sense_fails_the_scenario(stage, monkeypatch):
    plays(monkeypatch, lambda *_: POWER_OFF, '3.00 record {"T":"3.0000", "P":"9"')
    assert failures(stage, scenario("one", "a")) == [["a: boot 1: every record makes sense"]]


@pytest.mark.parametrize(
    ("writes", "found", "holds"),
    [
        ({}, b"as made", True),
        ({}, b"written", False),
        ({0x54: b"written"}, b"written", True),
        ({0x54: b"written"}, b"as made", False),
    ],
)
def test_parts_hold_in_the_end_what_the_board_has_written(stage, monkeypatch, writes, found, holds):
    def play(folder, *_):
        (folder / "eeprom-54").write_bytes(found)
        return POWER_OFF

    plays(monkeypatch, play)
    part = Part("script", 1, 1, {0x54: b"as made"}, writes=writes)
    ((claims,),) = [failures(stage, Scenario("one", "", {"a": part}, lambda *_: None))]
    assert (claims == []) == holds
    assert holds or claims[0].startswith("a: in the end the modules hold")


def test_folders_of_commands_that_were_killed_are_taken_away(tmp_path):
    ended = subprocess.Popen(["true"])
    ended.wait()
    for name in (f"run.{ended.pid}", f"run.{os.getppid()}", "last"):
        (tmp_path / name / "escalate").mkdir(parents=True)
    own = folder_for(tmp_path)
    assert own == tmp_path / f"run.{os.getpid()}"
    assert {path.name for path in tmp_path.iterdir()} == {
        own.name,
        f"run.{os.getppid()}",
        "last",
    }


def test_person_who_stops_the_command_stops_every_board(stage, monkeypatch):
    ended = []

    def play(folder, _nonce, over):
        if folder.name == "b":
            assert over.wait(BOUND_S)
            ended.append(folder.name)
        return POWER_OFF

    plays(monkeypatch, play)
    playing = stage.perform([scenario("one", "a"), scenario("two", "b"), scenario("three", "b")], 2)
    next(playing)
    with pytest.raises(KeyboardInterrupt):
        playing.throw(KeyboardInterrupt())
    assert ended in (["b"], ["b", "b"])
