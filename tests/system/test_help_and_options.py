"""The command line, with the daemon alone on a device that has nothing else."""

import pytest
from camera import BOUND, DEVELOPS, WARDEX

NOTHING = ("bus", "redis-cache", "redis-store", "services", "supervisor", "watchdog", "observers")
USAGE = "Usage: wardex [V.0.4.1539] <options ... >\nOptions:  [-?] [-h] [--help]\n"
COMBINED = "Option doesn't take an argument, but a combined argument was supplied: "


@pytest.fixture
def wardex(boot):
    """Runs the daemon to its end: exit status, standard output, standard error."""
    camera = boot(without=NOTHING)

    def run(*arguments, program=WARDEX):
        script = 'exec "$@" >/tmp/out 2>/tmp/err'
        status, _ = camera.run("sh", "-c", script, "sh", program, *arguments, bound=BOUND)
        return status, camera.instance.read("/tmp/out"), camera.instance.read("/tmp/err")

    run.camera = camera
    return run


def test_each_help_option_prints_the_usage_and_ends_with_zero(wardex):
    for option in ("-?", "-h", "--help"):
        assert wardex(option) == (0, USAGE, ""), option


@pytest.mark.parametrize("more", [["-h"], ["--help", "-?"], ["word"], ["-x"], ["--help=x"]])
def test_help_comes_first_whatever_follows(wardex, more):
    assert wardex("--help", *more) == (0, USAGE, "")


def test_help_is_found_behind_words_that_are_no_options(wardex):
    assert wardex("start", "/etc/wardex.conf", "", "-h") == (0, USAGE, "")
    assert wardex(*["word"] * 60, "-h") == (0, USAGE, "")


def test_help_is_found_by_an_abbreviation(wardex):
    assert wardex("--he") == (0, USAGE, "")


def test_usage_has_the_name_by_which_the_program_was_called(wardex):
    wardex.camera.instance.path("/opt/orvo/bin/bello").symlink_to(WARDEX)
    assert wardex("-h", program="/opt/orvo/bin/bello") == (0, USAGE.replace("wardex", "bello"), "")


@pytest.mark.parametrize("option", ["-x", "-H", "--halp", "-hh", "--helpx", "-x=1"])
def test_unknown_option_is_named_and_ends_with_one(wardex, option):
    assert wardex(option) == (1, "", f"Invalid argument: {option}\n")


@pytest.mark.parametrize("option", ["--help=x", "--help=", "-h=1"])
def test_option_with_a_combined_argument_is_named_and_ends_with_one(wardex, option):
    assert wardex(option) == (1, "", f"{COMBINED}{option}\n")


def test_first_wrong_option_decides(wardex):
    assert wardex("word", "-x", "-y", "-h") == (1, "", "Invalid argument: -x\n")


def test_words_that_are_no_options_are_ignored_and_the_daemon_starts(boot):
    camera = boot(developer=True, arguments=("start", "now", "", *["word"] * 60))
    camera.await_text(DEVELOPS)
    camera.await_bus_name()
    assert camera.process()
    assert camera.lines("wardex.err") == []
