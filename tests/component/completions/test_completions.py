"""What the shells offer behind wardexctl: what the program itself tells, and what the device has."""

import functools
import os
import re
import subprocess

import pytest
import shells

LEVELS = ["DEBUG", "DIAG", "EMERG", "ERROR", "FATAL", "INFO", "TRACE", "WARN"]


def ask(*words):
    """Runs the program itself."""
    program = f"{os.environ['WARDEX_BIN']}/wardexctl"
    return subprocess.run((program, *words), capture_output=True, text=True)


@functools.lru_cache(maxsize=None)
def told(title, *words):
    """The first words of the lines below a title of the program's help."""
    match = re.search(rf"^{title}:\n((?:  .*\n)*)", ask(*words, "--help").stdout, re.MULTILINE)
    return re.findall(r"^  (\S+)", match[1], re.MULTILINE) if match else []


def verbs():
    """All verbs of the program."""
    found = told("Subcommands")
    assert len(found) > 10
    return found


def options(verb):
    """The options of a verb, all their forms."""
    return sorted(name for names in told("Options", verb) for name in names.split(","))


@pytest.fixture(scope="module", name="typed_bash")
def _typed_bash(tmp_path_factory):
    shell = shells.bash(tmp_path_factory.mktemp("bash"))
    yield shell
    shell.close()


@pytest.fixture(scope="module", name="bash")
def _bash(typed_bash):
    return lambda line: shells.bash_offers(typed_bash.folder, *re.split(r" |(?<==)|(?==)", line))


@pytest.fixture(scope="module", name="typed_zsh")
def _typed_zsh(tmp_path_factory):
    shell = shells.zsh(tmp_path_factory.mktemp("zsh"))
    yield shell
    shell.close()


@pytest.fixture(name="offers", params=["bash", "zsh"])
def _offers(request):
    if request.param == "bash":
        return request.getfixturevalue("bash")
    return request.getfixturevalue("typed_zsh").offers


def test_every_verb_is_offered_and_no_other(offers):
    assert offers("wardexctl ") == sorted(verbs())


def test_every_option_of_a_verb_is_offered_and_no_other(offers):
    for verb in verbs():
        assert offers(f"wardexctl {verb} -") == options(verb), verb


def test_services_of_the_device_are_offered_where_a_verb_takes_one(offers):
    for verb in verbs():
        found = offers(f"wardexctl {verb} ")
        if told("Positionals", verb)[:1] == ["NAME"]:
            assert found == ["corvane", "other"], verb
        else:
            assert "corvane" not in found, verb


def test_levels_are_offered_where_one_is_taken(offers):
    assert offers("wardexctl log --level ") == LEVELS
    assert offers("wardexctl loglevel wardex ") == sorted([*LEVELS, "all", "default", "none"])
    assert [
        each.rpartition("+")[2] for each in offers("wardexctl loglevel wardex WARN,+")
    ] == LEVELS


def test_levels_offered_are_the_programs():
    complaint = ask("log", "--level", "x")
    assert complaint.returncode == 64
    assert sorted(re.findall(r"\b[A-Z]{4,5}\b", complaint.stderr)) == LEVELS


def test_sources_are_those_that_the_device_has(offers):
    assert offers("wardexctl loglevel ") == ["all", "other", "wardex"]
    assert offers("wardexctl log --source ") == ["other", "wardex"]


def test_state_to_wait_for_is_offered(offers):
    assert [each.rstrip("=") for each in offers("wardexctl monitor --until ")] == [
        "corvane",
        "pictor",
    ]
    assert offers("wardexctl monitor --until pictor=") == ["down", "up"]


def test_words_behind_the_last_are_not_completed(bash):
    assert bash("wardexctl grace pictor 30s ") == []
    assert bash("wardexctl list ") == []


@pytest.mark.parametrize("shell", ["typed_bash", "typed_zsh"])
def test_keys_of_a_person_become_words(request, shell):
    shell = request.getfixturevalue(shell)
    assert shell.call("wardexctl gr\tcor\t30\t") == "grace corvane 30s"
    assert shell.call("wardexctl --js\tmon\t--un\tpic\tu\t") == "--json monitor --until pictor=up"
    assert shell.call("wardexctl log --le\twar\t -f") == "log --level WARN -f"
    assert (
        shell.call("wardexctl logl\tw\tTRACE,inf\t --sa\t") == "loglevel wardex TRACE,INFO --save"
    )


def test_supervisor_that_is_gone_leaves_the_names_that_are_known(tmp_path):
    program = tmp_path / "wardexctl"
    program.write_text("#!/bin/sh\nexit 5\n")
    program.chmod(0o755)
    assert shells.bash_offers(tmp_path, "wardexctl", "start", "") == [
        *("corvane", "pictor", "quorl", "wirl"),
    ]
