"""What the command does to a person's terminal: colours, and how it leaves it."""

import pytest
from screen import CTRL_C, CTRL_Z

UP = 0
INTERRUPTED, TERMINATED = 130, 143
# The settings before and after, as the shell finds them.
AROUND = (
    'trap : INT TERM; stty -g >/tmp/before; {}; echo "ended $?"; stty -g >/tmp/after; echo over'
)


def ends_clean(camera, screen):
    """Waits for the shell's last word; whether the terminal's settings are as they were."""
    screen.await_true(lambda: "over" in screen.lines(), "the shell's last word")
    before, after = (camera.instance.read(f"/tmp/{name}") for name in ("before", "after"))
    assert before
    return before == after


def send(camera, signal):
    """Sends a signal to the command."""
    camera.run("sh", "-c", f"kill -{signal} $(ps -C wardexctl -o pid=)")


@pytest.fixture
def around(stable, open_screen):
    """Runs the command in a shell that compares the terminal's settings."""

    def make(words):
        return open_screen(stable, "sh", "-c", AROUND.format(f"wardexctl {words}"))

    return make


# Colours.


@pytest.mark.parametrize("words", [("status",), ("log", "-n", "3")])
def test_colours_on_a_terminal_only_when_wanted(stable, open_screen, words):
    coloured = open_screen(stable, "wardexctl", *words)
    assert coloured.await_end() == UP
    plain = open_screen(stable, "wardexctl", *words, NO_COLOR="1")
    assert plain.await_end() == UP
    dumb = open_screen(stable, "wardexctl", *words, term="dumb")
    assert dumb.await_end() == UP
    assert b"\x1b[" in coloured.heard()
    assert b"\x1b[" not in plain.heard() + dumb.heard()
    assert "\x1b[" not in stable.run("wardexctl", *words)[1]


def test_verdict_of_status_has_its_colour(stable, open_screen):
    screen = open_screen(stable, "wardexctl", "status")
    screen.await_line("stable")
    assert screen.colour(0) == "green"


# Its ends.


@pytest.mark.parametrize(("words", "sign"), [("top", "stable"), ("log -f", ""), ("monitor", "")])
def test_ctrl_c_leaves_the_terminal_sane(stable, around, words, sign):
    screen = around(words)
    known = "SuprStableSystem::entry" if words == "log -f" else "pictor"
    screen.await_true(
        lambda: any(known in line for line in screen.lines()) and screen.line(sign), "its output"
    )
    screen.press(CTRL_C)
    screen.await_line("", f"ended {INTERRUPTED}")
    assert ends_clean(stable, screen)
    assert not any("terminate" in line or "what()" in line for line in screen.lines())


def test_quit_and_signals_leave_the_terminal_sane(stable, around):
    for end, status in ((None, UP), ("TERM", TERMINATED), ("HUP", 129), ("QUIT", 131)):
        screen = around("top")
        screen.await_line("stable")
        if end is None:
            screen.press("q")
        else:
            send(stable, end)
        screen.await_line("", f"ended {status}")
        assert ends_clean(stable, screen)


def test_live_screen_can_be_stopped_and_continued(stable, open_screen):
    shell = open_screen(stable, "bash", "--norc", "--noprofile", "-i")
    shell.press("wardexctl top\r")
    shell.await_line("stable")
    shell.press(CTRL_Z)
    shell.await_line("", "Stopped")
    shell.press("echo back\r")
    shell.await_line("back")
    shell.press("fg\r")
    shell.await_line("stable")
    shell.await_line("", "q quit  ? help")
    shell.press("q")
    shell.press("echo status=$?\r")
    shell.await_line("status=0")


def test_live_screen_ends_with_its_terminal(stable, open_screen):
    screen = open_screen(stable, "wardexctl", "top")
    screen.await_line("stable")
    screen.close()
    stable.await_true(lambda: "wardexctl" not in stable.listed(), "the end of the program")
