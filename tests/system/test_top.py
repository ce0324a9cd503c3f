"""The live screen on the device: what stands on it in each situation, and what its keys do."""

import json
import os

import pytest
from camera import PICTOR
from screen import ENTER, ESCAPE, BACKSPACE, DOWN, PAGE_DOWN, PAGE_UP, UP

FAILED = 1
DEAD = f"Service {PICTOR} considered dead, restarting"
KEYS = "q quit  ? help"
UNKNOWN_STATES = "The log does not answer: states are not known."
STRANGER = 61234


@pytest.fixture
def top(stable, open_screen):
    """The live screen of a healthy device."""
    screen = open_screen(stable, "wardexctl", "top")
    screen.await_line(">corvane", "up for")
    screen.await_line("stable")
    return screen


@pytest.fixture
def careful(boot):
    """A stable camera in developer mode, which outlives its supervisor."""
    camera = boot(developer=True)
    camera.await_stable()
    return camera


def store(camera, count):
    """Writes records of another program: "0", "1", ..."""
    with camera.connect_redis() as cache:
        for number in range(count):
            text = f'{{"T":"1.0000", "P":"1", "C":"WARN", "S":"test", "M":"{number}"}}'
            cache.command("RPUSH", "LOG:ENTRIES", text)


def await_last_record(screen, message):
    """Waits until the line above the status line ends with the message."""

    def claim(lines):
        assert lines[-2].split()[-1] == message

    screen.await_claim(claim)


# What it shows.


def test_healthy_device_is_shown_whole(top, stable):
    def claim(lines):
        assert len(lines) == 24
        assert lines[0].startswith("stable             family ZK4XX, supervisor answers, started ")
        assert lines[2].startswith("SERVICE  RUN LEVEL  PROCESS")
        assert [line.split()[0] for line in lines[3:7]] == [">corvane", "pictor", "wirl", "quorl"]
        assert lines[8:10] == [
            "Restarts  0 of 3 package restarts in 300 s; need number 4 in that time reboots",
            "Next      nothing, while both judged services answer",
        ]
        assert lines[10].startswith("Watchdog  ")
        assert lines[12].startswith("Log  all levels, ") and lines[12].endswith(", following")
        assert lines[22].endswith("TRACE wardex SuprStableSystem::entry")
        assert lines[23].startswith(KEYS)
        assert top.colour(0) == "green"

    top.await_claim(claim)
    assert stable.watchdog().count("open") == 1


def test_service_that_hangs_is_shown_with_what_comes(top, stable):
    stable.order("pictor", "hang")
    top.await_line("unstable")
    top.await_line(" pictor", "down for")
    top.await_line("Next      in about")
    top.await_true(lambda: any(DEAD in line for line in top.lines()), DEAD)
    top.await_line("Watchdog  longest gap by the records", "(the scripts of pictor)")


def test_developer_mode_is_shown_in_red(careful, open_screen):
    screen = open_screen(careful, "wardexctl", "top")
    screen.await_line("DEVELOPER MODE: nothing is restarted or rebooted")
    assert screen.colour(1) == "red"
    screen.await_line("Watchdog  not fed: developer mode")


def test_time_goes_on(top):
    first = top.line(">corvane")
    top.await_true(lambda: top.line(">corvane") != first, "another second")


# What goes away and comes back.


def test_supervisor_that_goes_and_comes_back(careful, open_screen):
    screen = open_screen(careful, "wardexctl", "top")
    screen.await_line("stable")
    careful.supervisor("kill")
    screen.await_line("supervisor silent")
    screen.await_line("com.orvo.wardex: nobody owns this name on the system bus")
    careful.supervisor("start")
    screen.await_line("stable")


def test_supervisor_that_hangs_holds_up_nothing(careful, open_screen):
    screen = open_screen(careful, "wardexctl", "top")
    screen.await_line("stable")
    careful.supervisor("stop")
    screen.await_line("The supervisor has not answered for ")
    screen.press("?")
    screen.await_line("Keys")
    screen.press("q")
    screen.await_line("supervisor silent")
    careful.supervisor("continue")
    screen.await_line("stable")


def test_redis_that_goes_and_comes_back(top, stable):
    stable.redis("stop")
    top.await_line(UNKNOWN_STATES)
    top.await_line("stable")
    record = "SuprStableSystem::entry"
    top.await_true(lambda: any(line.endswith(record) for line in top.lines()), record)
    stable.redis("start")
    top.await_true(lambda: not top.line(UNKNOWN_STATES), "the log's answer")
    store(stable, 1)
    stable.redis("stop")
    top.await_line(UNKNOWN_STATES)


def test_redis_that_hangs_holds_up_nothing(top, stable):
    stable.redis("hang")
    top.await_line(UNKNOWN_STATES)
    top.press("q")
    try:
        assert top.await_end() == 0
    finally:
        stable.redis("continue")


def test_bus_that_goes_is_told(top, stable):
    stable.bus("stop")
    top.await_line("supervisor silent")
    top.press("q")
    assert top.await_end() == 0


# The terminal.


def test_size_is_followed_and_a_small_one_told(top):
    top.resize(20, 60)
    top.await_line("Too small: 60x20.")
    top.await_true(lambda: top.lines()[1:3] == ["Needs 80x24.", "q quits."], "what to do")
    top.press("x")
    top.resize(40, 132)
    top.await_line("stable")

    def claim(lines):
        assert lines[39].startswith(KEYS)
        assert len([line for line in lines if " TRACE wardex " in line]) > 12

    top.await_claim(claim)


@pytest.mark.parametrize("term", ["vt100", "linux", "xterm-256color"])
def test_any_terminal_shows_it(stable, open_screen, term):
    screen = open_screen(stable, "wardexctl", "top", term=term)
    screen.await_line(">corvane", "up for")
    assert (screen.colour(0) == "default") == (term == "vt100")
    screen.press("q")
    assert screen.await_end() == 0


def test_colours_are_left_out_when_nobody_wants_them(careful, open_screen):
    screen = open_screen(careful, "wardexctl", "top", NO_COLOR="1")
    screen.await_line("DEVELOPER MODE")
    assert (screen.colour(0), screen.colour(1)) == ("default", "default")


@pytest.mark.parametrize("term", ["dumb", "nonesuch"])
def test_terminal_that_cannot_show_it_is_refused(stable, open_screen, term):
    screen = open_screen(stable, "wardexctl", "top", term=term)
    screen.await_line("wardexctl: top: does not know how to draw on this terminal (TERM)")
    assert screen.await_end() == FAILED


def test_what_is_no_terminal_is_refused(stable):
    status, output = stable.run("wardexctl", "top")
    assert (status, output.splitlines()) == (
        FAILED,
        [
            "wardexctl: top: needs a terminal to draw on",
            "  wardexctl status shows the same once, top --json for programs.",
        ],
    )


def test_programs_get_an_object_per_period(stable):
    output = stable.run("sh", "-c", "wardexctl top --json | head -n 3")[1]
    objects = [json.loads(line) for line in output.splitlines()]
    assert [(each["schema"], each["verb"], each["verdict"]) for each in objects] == [
        (1, "top", "stable")
    ] * 3
    assert objects[0]["feed"]["timeoutSeconds"] is None
    assert len(objects[0]["records"]) == 10


# Its keys.


def test_services_are_stopped_and_started_by_keys(top, stable):
    top.press(DOWN + "j")
    top.await_line(">wirl")
    top.press("x")
    top.await_line("Stop wirl? y/n")
    top.press("n")
    top.await_line("Nothing was done.")
    assert not stable.calls()
    top.press("xy")
    top.await_line("wirl was stopped, ", "status 0")
    top.await_line(">wirl", "does not run")
    top.press("s")
    top.await_line("Start wirl? y/n")
    top.press("y")
    top.await_line("wirl was started, ", "status 0")
    top.await_line(">wirl", " runs")
    top.press("ry")
    top.await_line("wirl was restarted, ", "status 0")
    assert [call for call in stable.calls() if call.endswith("begin")] == [
        *("10_wirl stop begin", "10_wirl restart begin"),
        *("10_wirl stop begin", "10_wirl restart begin"),
    ]
    top.press(UP)
    top.await_line(">pictor")


def test_script_that_takes_its_time_is_waited_for_on_the_screen(top, stable):
    stable.knob("10_wirl", "stop", "delay 3000")
    top.press("jjxy")
    top.await_line("waiting for the script of wirl ... ")
    top.press("s")
    top.await_line("One thing after the other: waiting for the script of wirl")
    top.await_line("wirl was stopped, ")


def test_script_that_fails_is_told(top, stable):
    stable.knob("10_wirl", "stop", "fail 1")
    top.press("jjxy")
    top.await_line("wirl was not stopped, ", "status 4000")


def test_refusal_by_the_policy_is_told(put_on_desk, open_screen):
    if os.geteuid() != 0:
        pytest.skip("only root can act as another user")
    camera = put_on_desk()
    with camera.instance.path("/etc/passwd").open("a", encoding="utf-8") as users:
        users.write(f"stranger:x:{STRANGER}:{STRANGER}::/:/bin/sh\n")
    camera.power_on()
    camera.await_stable()
    become = ("setpriv", f"--reuid={STRANGER}", f"--regid={STRANGER}", "--clear-groups")
    screen = open_screen(camera, *become, "wardexctl", "top")
    screen.await_line(">corvane")
    screen.press("jjxy")
    screen.await_line("To stop wirl was refused (AccessDenied): be root, or in group wardex.")
    assert not camera.calls()


def test_help_covers_the_screen_until_any_key(top):
    top.press("?")
    top.await_line("Keys")
    top.await_line("  s  x  r ", "start, stop, restart it; asks y/n first")
    top.await_line("stable")
    top.press("s")
    top.await_line("SERVICE")
    top.await_true(lambda: top.lines()[23].startswith(KEYS), "the keys in the last line")


def test_log_is_filtered_and_shown_again(top):
    top.press("/Unstable|Stable")
    top.await_line("Filter (Enter takes it): Unstable|Stable")
    top.press(BACKSPACE * 15 + "StableS" + ENTER)
    top.await_line("Log  all levels, matching /StableS/, 1 of ")

    def claim(lines):
        assert lines[13].endswith(" TRACE wardex SuprStableSystem::entry")
        assert lines[14] == ""

    top.await_claim(claim)
    top.press("/(" + ENTER)
    top.await_line("'StableS(' is no regular expression: ")
    top.press("/x" + ESCAPE)
    top.await_line(KEYS)
    top.press("c")
    top.await_line("Log  all levels, ", ", following")
    top.press("ll")
    top.await_line("Log  WARN and worse, ")
    top.await_true(lambda: not any(" TRACE " in line for line in top.lines()), "no TRACE")


def test_ten_thousand_records_are_scrolled_through(stable, open_screen):
    store(stable, 10000)
    screen = open_screen(stable, "wardexctl", "top")
    screen.await_line("Log  all levels, 10000 of 10000, following")
    await_last_record(screen, "9999")
    screen.press(PAGE_UP)
    screen.await_line("Log  all levels, 10000 of 10000, ", "9 newer (f follows)")
    await_last_record(screen, "9990")
    screen.press("-")
    await_last_record(screen, "9989")
    screen.press("g")
    screen.await_line("Log  all levels, 10000 of 10000, ", "9990 newer (f follows)")
    screen.press(PAGE_DOWN)
    screen.await_line("Log  all levels, 10000 of 10000, ", "9981 newer (f follows)")
    screen.press("f")
    await_last_record(screen, "9999")
    screen.press("/^77.7$" + ENTER)
    screen.await_line("Log  all levels, matching /^77.7$/, 10 of 10000")
