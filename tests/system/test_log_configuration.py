"""The log of the running daemon: configured from the store at its start, and live from then on."""

import json
import re

import pytest
from camera import DEVELOPS, number, text

LIST = "LOG:ENTRIES"
CHANNEL = "LOGGER:CFG"
# A text that the claims can provoke whenever they like.
REFUSED = "setServicePingTimeoutOneShot: restartTimer({}, 5) failed !"
ANNOUNCEMENT = re.compile(
    r"Applying new log configuration: (mask\(.*\), SigSegV Regexp\(.*\), max logs\(-?\d+\)),"
    r" instance\(0x[0-9a-f]+\)"
)


@pytest.fixture
def quiet(boot):
    """A device that logs at the default mask, and whose supervisor listens for configuration."""

    def make(**stored):
        camera = boot(developer=True, stored_log_configuration=stored)
        camera.await_bus_name()
        await_listeners(camera, 1)
        return camera

    return make


def await_listeners(camera, count):
    """Waits until so many programs listen for configuration."""
    with camera.connect_redis() as cache:
        camera.await_true(
            lambda: cache.command("PUBSUB", "NUMSUB", CHANNEL)[1] == count, f"{count} listeners"
        )


def publish(camera, configuration):
    """Sends a configuration, or any text, to every program of the device."""
    words = configuration if isinstance(configuration, str) else json.dumps(configuration)
    with camera.connect_redis() as cache:
        assert cache.command("PUBLISH", CHANNEL, words) == 1


def announced(camera, count=1):
    """The configurations announced so far, at least so many."""

    def announcements():
        found = [ANNOUNCEMENT.fullmatch(text) for text in camera.texts("INFO")]
        return [match[1] for match in found if match]

    camera.await_true(lambda: len(announcements()) >= count, f"{count} announcements")
    return announcements()


def provoke(camera, word):
    """Makes the supervisor warn about something with this word; answers the text."""
    assert camera.call("setServicePingTimeoutOneShot", text(word), number(5)).code != 0
    return REFUSED.format(word)


def stored_texts(camera):
    """What the list of records holds."""
    with camera.connect_redis() as cache:
        records = cache.command("LRANGE", LIST, "0", "-1")
    return [json.loads(record)["M"] for record in records]


# Taken.


def test_mask_opens_and_closes_levels_live(quiet):
    camera = quiet()
    assert {record.level for record in camera.await_true(camera.records, "a record")} == {"WARN"}
    publish(camera, {"source": "all", "mask": 255})
    assert announced(camera) == ["mask(0xff), SigSegV Regexp(), max logs(10000)"]
    done = "setServicePingTimeoutOneShot: restartTimer(com.orvo.pictor, 900)"
    camera.call("setServicePingTimeoutOneShot", text("com.orvo.pictor"), number(900))
    camera.await_text(done)
    publish(camera, {"source": "all", "mask": 0x40})
    announced(camera, 2)
    before = camera.texts().count(done)
    camera.call("setServicePingTimeoutOneShot", text("com.orvo.pictor"), number(900))
    provoke(camera, "masked")
    publish(camera, {"source": "all", "mask": 0xF0})
    assert announced(camera, 3)[1:] == [
        "mask(0x40), SigSegV Regexp(), max logs(10000)",
        "mask(0xf0), SigSegV Regexp(), max logs(10000)",
    ]
    camera.await_text(provoke(camera, "open"))
    assert camera.texts().count(done) == before
    assert REFUSED.format("masked") not in camera.texts()


def test_maximum_shortens_the_list_live(quiet):
    camera = quiet()
    for word in ("a", "b", "c", "d"):
        provoke(camera, word)
    publish(camera, {"source": "all", "max": 3})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(), max logs(3)"]
    assert stored_texts(camera)[:2] == [REFUSED.format("c"), REFUSED.format("d")]
    assert len(stored_texts(camera)) == 3
    last = provoke(camera, "e")
    camera.await_text(last)
    assert len(stored_texts(camera)) == 3
    assert stored_texts(camera)[-1] == last


def test_crash_pattern_ends_the_daemon_at_the_chosen_message(quiet):
    camera = quiet()
    publish(camera, {"source": "all", "segvregex": "set.*fatal.*"})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(set.*fatal.*), max logs(10000)"]
    provoke(camera, "harmless")
    camera.send("setServicePingTimeoutOneShot", text("fatal"), number(5))
    message = REFUSED.format("fatal")
    assert camera.await_end() == 139
    assert camera.lines("wardex.err")[-1] == (
        f"Will raise(SIGSEGV): {message} matches configured regex(set.*fatal.*)!"
    )
    # The record is written first.
    camera.await_text(message)


def test_crash_pattern_that_matches_its_own_announcement_ends_the_daemon_with_that(quiet):
    camera = quiet()
    publish(camera, {"source": "all", "segvregex": ".*new log.*"})
    assert camera.await_end() == 139
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(.*new log.*), max logs(10000)"]


def test_crash_pattern_that_matches_a_part_only_or_is_none_does_no_harm(quiet):
    camera = quiet()
    publish(camera, {"source": "all", "segvregex": "restartTimer"})
    announced(camera)
    provoke(camera, "part")
    publish(camera, {"source": "all", "segvregex": "(["})
    announced(camera, 2)
    provoke(camera, "once")
    camera.await_text(provoke(camera, "twice"))
    assert camera.process()
    complaints = [line for line in camera.lines("wardex.err") if "segvregex" in line]
    assert len(complaints) == 1
    assert complaints[0].startswith("redisPushLog: segvregex(([) matches nothing: ")


@pytest.mark.parametrize(
    "pattern",
    # Deepest in the thread that listens, which announces what it has heard: on its small stack.
    ["(" * 500 + ")" * 500, "(" * 1000, "|" * 1000, "(?:" + "^" * 300 + "){6}", "(a*)*" * 200],
    ids=["groups", "open groups", "alternatives", "repeated assertions", "nested repetitions"],
)
def test_worst_crash_pattern_fits_the_stack(quiet, pattern):
    camera = quiet()
    publish(camera, {"source": "all", "segvregex": pattern})
    publish(camera, {"source": "all", "segvregex": "done"})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(done), max logs(10000)"]
    # The first announcement, too, though too long for the whole pattern.
    assert sum(text.startswith("Applying new log") for text in camera.texts("INFO")) == 2
    assert camera.process()


def test_own_source_and_own_process_are_meant(quiet):
    camera = quiet()
    publish(camera, {"source": "wardex", "max": 500})
    publish(camera, {"source": "all", "pid": camera.process(), "max": 600})
    publish(camera, {"pid": camera.process(), "max": 700, "source": "wardex"})
    assert announced(camera, 3) == [
        f"mask(0xf0), SigSegV Regexp(), max logs({count})" for count in (500, 600, 700)
    ]


@pytest.mark.parametrize(
    "foreign",
    [
        {"source": "pictor", "mask": 255},
        {"source": "WARDEX", "mask": 255},
        {"mask": 255},
        {"source": 7, "mask": 255},
        {"source": "all", "pid": 1, "mask": 255},
        {"source": "wardex", "pid": 99999999, "mask": 255},
        [{"source": "all", "mask": 255}],
        "255",
        '"all"',
    ],
    ids=[
        *("other source", "source in capitals", "no source", "source is a number"),
        *("other process", "own source of another process", "array", "number", "text"),
    ],
)
def test_configuration_for_others_or_for_nobody_is_ignored(quiet, foreign):
    camera = quiet()
    publish(camera, foreign)
    publish(camera, {"source": "all"})
    # What comes in one after the other is taken in so.
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(), max logs(10000)"]
    assert camera.lines("wardex.out") == []


def test_values_of_another_type_are_ignored_and_the_rest_is_taken(quiet):
    camera = quiet()
    publish(camera, {"source": "all", "mask": "255", "max": 77, "segvregex": 3, "colour": "red"})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(), max logs(77)"]


def test_text_that_is_no_json_is_told_at_once_on_standard_output(quiet):
    camera = quiet()
    publish(camera, '{"source":"all",')
    camera.await_true(lambda: camera.lines("wardex.out"), "the complaint")
    assert camera.lines("wardex.out") == ['Received no valid JSON config?! ({"source":"all",)']
    publish(camera, {"source": "all"})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(), max logs(10000)"]


# Stored.


def test_stored_configuration_of_all_comes_first_and_the_own_one_over_it(quiet):
    camera = quiet(
        all='{"source":"all","mask":8,"max":900}', wardex='{"source":"wardex","max":500}'
    )
    publish(camera, {"source": "wardex"})
    assert announced(camera) == ["mask(0x8), SigSegV Regexp(), max logs(500)"]
    # Mask 8 lets nothing through of all that the start has to say.
    assert len(camera.records()) == 1


def test_stored_configuration_is_taken_without_a_word(quiet):
    camera = quiet(all='{"source":"all","mask":255}')
    camera.await_text("SuprStartingSystem::entry")
    assert camera.texts()[0] == DEVELOPS
    assert camera.texts("INFO") == []


def test_stored_text_that_is_no_json_is_told_and_the_defaults_hold(quiet):
    camera = quiet(all="nonsense", wardex="{}")
    publish(camera, {"source": "all"})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(), max logs(10000)"]
    camera.await_true(lambda: camera.lines("wardex.out"), "the complaint")
    assert camera.lines("wardex.out") == ["Received no valid JSON config?! (nonsense)"]


def test_store_that_changes_is_read_at_the_next_start_only(quiet):
    camera = quiet()
    with camera.connect_redis("redis-store") as store:
        store.command("HSET", "LOG:PERM:CFG", "wardex", '{"source":"wardex","max":42}')
    publish(camera, {"source": "all"})
    assert announced(camera) == ["mask(0xf0), SigSegV Regexp(), max logs(10000)"]
    camera.supervisor("kill")
    # Redis may hear of an end later than the command that made it.
    await_listeners(camera, 0)
    camera.supervisor("start")
    await_listeners(camera, 1)
    publish(camera, {"source": "all"})
    assert announced(camera, 2)[1] == "mask(0xf0), SigSegV Regexp(), max logs(42)"
