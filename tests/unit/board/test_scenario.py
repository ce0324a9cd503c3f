"""How runs of the board are played: several at once, judged in order, ended when told."""

from pathlib import Path
from threading import Barrier

import pytest

from wardex_board import machine
from wardex_board.images import Images
from wardex_board.machine import OUT_OF_TIME, POWER_OFF, Run
from wardex_board.scenario import Part, Scenario, Stage

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


def plays(monkeypatch, play) -> None:
    """`play(folder, nonce, over)` stands in for the emulator, and answers how the life ended."""

    def stand_in(folder: Path, _images, plan, tell, over) -> Run:
        nonce = plan.words["board.nonce"]
        (folder / "console").write_text("the last words\n")
        end = play(folder, nonce, over)
        lines = [
            f"{nonce} 1.00 boot 1",
            "forged 1.50 said other",
            f"{nonce} 2.00 said {folder.parent.name}",
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
