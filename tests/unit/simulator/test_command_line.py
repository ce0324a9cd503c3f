"""The words of ./run but for those after do."""

import re
import signal

import pytest

from wardex_desk import cli, command_line, ending, scenario
from wardex_desk.command_line import Request, parse
from wardex_desk.deeds import WrongWords
from wardex_desk.story_live import hints


def test_no_words_put_a_camera_on_the_desk():
    assert parse([]) == Request(command="run", name="camera", family="ZK4XX", preset="dev")


def test_options_may_stand_before_and_behind_the_words():
    before = parse(["--name", "left", "do", "pictor", "hang"])
    behind = parse(["do", "pictor", "hang", "--name=left"])
    assert before == behind
    assert (before.command, before.words, before.name) == ("do", ["pictor", "hang"], "left")


def test_words_of_the_shell_are_not_looked_at():
    request = parse(["--name", "left", "sh", "ls", "--help", "-f"])
    assert (request.command, request.words, request.name) == ("sh", ["ls", "--help", "-f"], "left")


def test_words_of_the_operators_command_are_not_looked_at():
    request = parse(["--name", "left", "ctl", "log", "-f", "--level", "WARN", "--", "--json"])
    assert (request.command, request.name) == ("ctl", "left")
    assert request.words == ["log", "-f", "--level", "WARN", "--", "--json"]
    assert parse(["ctl"]) == Request(command="ctl")


@pytest.mark.parametrize("name", ["camera", "left"])
def test_commands_that_a_person_is_told_reach_the_device(name):
    told = re.findall(r"\./run([^,\n]*)", "\n".join(hints("ZK4XX", name)))
    requests = [parse(words.split()) for words in told]
    assert [request.command for request in requests] == ["ctl", "do", "logs", "sh", "help"]
    assert {request.name for request in requests if request.command != "help"} == {name}
    assert requests[0].words == ["status"]


def test_every_option_is_kept():
    request = parse(
        "--family ZM7xx --developer --watchdog 500 --preset asan-ubsan --wardex /w --home /h".split()
    )
    assert (request.family, request.developer, request.watchdog_ms) == ("ZM7xx", True, 500)
    assert (request.preset, str(request.wardex), str(request.home)) == ("asan-ubsan", "/w", "/h")


@pytest.mark.parametrize("words", [["logs", "-f"], ["-f", "logs"], ["logs", "--follow"]])
def test_logs_can_be_followed(words):
    assert parse(words).command == "logs"
    assert parse(words).follow


def test_logs_can_be_narrowed_down():
    request = parse(["logs", "--level", "warn", "-g", "--list"])
    assert (request.level, request.text, request.follow) == ("WARN", "--list", False)


def test_faults_may_be_long_and_go_into_the_documents():
    request = parse(["--faults", "--soak", "--write-docs"])
    assert (request.command, request.soak, request.write_docs) == ("faults", True, True)
    assert not parse(["--faults"]).soak


def test_scenario_has_a_name():
    request = parse(["--scenario", "hang"])
    assert (request.command, request.scenario) == ("scenario", "hang")


@pytest.mark.parametrize(
    "words, complaint",
    [
        ("boot", "'boot' is not known: say do, ctl, sh, logs or an option, see ./run --help"),
        ("logs pictor", "'pictor' is one word too many after 'logs'"),
        ("--nme x", "'--nme' is not known: the options are --scenario, --list, --faults, --soak,"),
        (
            "logs --level loud",
            "no level is called 'loud': say one of DEBUG, DIAG, TRACE, INFO, WARN, ERROR, FATAL,"
            " EMERG",
        ),
        ("logs -g", "after '-g' comes a text"),
        ("logs --level", "after '--level' comes a level"),
        ("do pictor up -g x", "'-g' belongs to 'logs'"),
        ("--level WARN", "'--level' belongs to 'logs'"),
        ("--name", "after '--name' comes a name"),
        ("--scenario", "after '--scenario' comes a name"),
        ("--list=x", "'--list' takes no value"),
        ("--soak", "'--soak' and '--write-docs' belong to '--faults'"),
        ("--family ZX", "no family is called 'ZX': say one of ZK4XX, ZM7xx, ZQ9XX, none"),
        ("--preset fast", "no preset is called 'fast': say one of dev, asan-ubsan, tsan, "),
        ("--watchdog 0", "--watchdog 0: a number of milliseconds above 0 is needed"),
        ("--watchdog 1s", "--watchdog 1s: a number of milliseconds above 0 is needed"),
    ],
)
def test_wrong_words_are_answered_with_the_right_ones(words, complaint):
    with pytest.raises(WrongWords) as caught:
        parse(words.split())
    assert str(caught.value).startswith(complaint)


def test_help_has_one_line_for_every_option_and_subject():
    lines = command_line.help_text().splitlines()[2:]
    assert len(lines) == len(command_line.HELP)
    text = "\n".join(lines)
    for word in ("--scenario", "--list", "--name", "--family", "--developer", "--watchdog"):
        assert word in text
    for word in ("--preset", "--wardex", "--home", "--help", " ctl", " sh", " logs [-f]"):
        assert word in text
    for word in ("pictor", "redis", "bus", "supervisor", "developer", "eeprom", "script", "reboot"):
        assert f"do {word}" in text or word in text


def test_wrong_word_ends_with_status_two(capsys):
    assert cli.main(["do", "pictor", "hand"]) == 2
    caught = capsys.readouterr()
    assert caught.out == ""
    assert caught.err.startswith("run: 'hand' is not known after 'pictor': say one of up,")


def test_deed_without_a_device_ends_with_status_one(capsys, tmp_path):
    assert cli.main(["--home", str(tmp_path), "do", "pictor", "hang"]) == 1
    assert capsys.readouterr().err == ("run: no device 'camera' is running (start it with ./run)\n")
    assert list(tmp_path.iterdir()) == []


def test_help_ends_with_status_zero(capsys):
    assert cli.main(["--help"]) == 0
    assert capsys.readouterr().out == command_line.help_text() + "\n"


@pytest.mark.parametrize(
    "number, status",
    [(signal.SIGINT, 0), (signal.SIGTERM, 143), (signal.SIGHUP, 129)],
    ids=["ctrl-c", "sigterm", "sighup"],
)
def test_signal_ends_the_command_in_order(monkeypatch, number, status):
    def live(_):
        signal.raise_signal(number)

    before = {end: signal.getsignal(end) for end in ending.ENDS}
    monkeypatch.setattr(cli, "_put_on_desk", live)
    try:
        assert cli.main([]) == status
        assert signal.getsignal(signal.SIGINT) == signal.SIG_IGN
    finally:
        for end, handler in before.items():
            signal.signal(end, handler)


def test_wrong_scenario_is_answered_with_the_right_ones(capsys):
    assert cli.main(["--scenario", "hnag"]) == 2
    said = capsys.readouterr().err
    assert said.startswith("run: no scenario is called 'hnag': say one of healthy, hang, crash,")


def test_list_names_every_scenario_with_a_line(capsys):
    assert cli.main(["--list"]) == 0
    lines = capsys.readouterr().out.splitlines()
    assert [line.split()[0] for line in lines] == list(scenario.catalogue())
    assert not [line for line in lines if len(line.split()) < 3]
