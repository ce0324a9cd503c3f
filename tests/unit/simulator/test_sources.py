"""What the journals' lines become, and what becomes of lines that make no sense."""

import json

import pytest

from wardex_desk.events import (
    Availability,
    Boot,
    Feed,
    NameChanged,
    ObserverState,
    PingAnswered,
    Record,
    ScriptBegan,
    ScriptEnded,
    StandardError,
    SupervisorEnded,
    Syslog,
    Unreadable,
    WatchdogEvent,
)
from wardex_desk.sources import SETTLING_S, EventStream, Journal
from wardex_desk.sources_parse import (
    ParseError,
    parse_boot,
    parse_bus,
    parse_ping,
    parse_record,
    parse_script,
    parse_standard_error,
    parse_syslog,
    parse_watchdog,
    read_record,
)

NOW = 50.0
WHOLE = r'{"T":"12.3456", "P":"42", "C":"WARN", "S":"wardex", "M":"a \"b\" \/c \\d"}'


@pytest.mark.parametrize(
    "parser, line, event",
    [
        (parse_boot, "12.345678 power-on", Boot(12.345678, "power-on")),
        (parse_boot, "12.345678 watchdog", Boot(12.345678, "watchdog")),
        (
            parse_script,
            "12.34 30_pictor restart begin",
            ScriptBegan(12.35, "30_pictor", "restart", 12.34),
        ),
        (
            parse_script,
            "12.34 30_pictor restart end 3",
            ScriptEnded(12.34, "30_pictor", "restart", 12.34, 3),
        ),
        (parse_script, "12.34 reboot begin", ScriptBegan(12.35, "reboot", "", 12.34)),
        (parse_watchdog, "12.345678 open", WatchdogEvent(12.345678, "open")),
        (parse_watchdog, "12.345678 reset", WatchdogEvent(12.345678, "reset")),
        (parse_watchdog, "12.345678 feed 17", Feed(12.345678, 17)),
        (parse_watchdog, "12.345678 exit 137", SupervisorEnded(12.345678, 137)),
        (parse_ping, "12.345678 pictor starting", PingAnswered(12.345678, "pictor", "starting")),
        (parse_ping, "12.3 pictor delay 1500", PingAnswered(12.3, "pictor", "delay 1500")),
        (
            parse_syslog,
            "12.345678 <10>Nov  1 01:43:21 wardex[12]: a: b",
            Syslog(12.345678, 10, "wardex", "a: b"),
        ),
        (parse_syslog, "12.3 <10>Nov 21 01:43:21 wardex: x", Syslog(12.3, 10, "wardex", "x")),
        (parse_syslog, "12.3 plain words", Syslog(12.3, -1, "", "plain words")),
        (parse_standard_error, "Error: gone", StandardError(NOW, "Error: gone")),
        (parse_bus, '{"t":1.5,"event":"listening"}', ObserverState(1.5, "bus", "listening")),
        (parse_bus, '{"t":1.5,"event":"bus-lost"}', ObserverState(1.5, "bus", "lost")),
        (
            parse_bus,
            '{"t":1.5,"event":"name","name":"com.orvo.pictor","owned":false}',
            NameChanged(1.5, "com.orvo.pictor", False),
        ),
        (
            parse_bus,
            '{"t":1.5,"event":"availability","services":{"com.orvo.pictor":"up"},'
            '"sender":":1.5","path":"/"}',
            Availability(1.5, {"com.orvo.pictor": "up"}),
        ),
        (parse_record, '{"t":1.5,"event":"redis-lost"}', ObserverState(1.5, "records", "lost")),
    ],
    ids=lambda value: value if isinstance(value, str) else getattr(value, "__name__", "event"),
)
def test_a_line_becomes_its_event(parser, line, event):
    seen = parser(line, NOW)
    assert seen.at == pytest.approx(event.at)
    assert type(seen) is type(event)
    assert {**vars(seen), "at": 0} == {**vars(event), "at": 0}


@pytest.mark.parametrize("extra", ["", '"event":"record",'])
def test_a_record_is_dated_by_its_own_clock_and_unescaped(extra):
    line = "{" + f'"t":99.0,{extra}"record":{json.dumps(WHOLE)}' + "}"
    assert parse_record(line, NOW) == Record(
        pytest.approx(12.3457), "WARN", "wardex", 'a "b" /c \\d', 42, True
    )


@pytest.mark.parametrize("last", ["x", "\\\\", "\\"])
def test_a_record_cut_at_500_bytes_keeps_what_it_has(last):
    head = '{"T":"12.3456", "P":"42", "C":"FATAL", "S":"wardex", "M":"'
    raw = (head + "y" * 499)[: 499 - len(last)] + last + "\0"
    assert len(raw) == 500
    record = read_record(raw)
    assert (record.level, record.whole) == ("FATAL", False)
    assert record.text.rstrip("x\\") == "y" * (499 - len(head) - len(last))


def test_an_end_of_record_inside_the_message_is_not_taken_for_the_end():
    raw = r'{"T":"1.0000", "P":"4", "C":"WARN", "S":"wardex", "M":"so \"} it goes"}'
    assert read_record(raw).text == 'so "} it goes'


NONSENSE = {
    parse_boot: [
        "power-on",
        "12.3 by-accident",
        "1x.3 reboot",
    ],
    parse_script: [
        "12.3 30_pictor",
        "x 30_pictor stop begin",
        "12.3 30_pictor stop end x",
        "12.3 30_pictor stop sideways begin",
    ],
    parse_watchdog: [
        "12.3",
        "12.3 feed",
        "12.3 feed much",
        "12.3 bark",
        "nan open",
    ],
    parse_ping: [
        "12.3 pictor",
    ],
    parse_syslog: [
        "no-time <10>x",
    ],
    parse_bus: [
        "{",
        "[]",
        '{"t":1.5,"event":"dance"}',
        '{"t":1.5}',
        '{"t":"soon","event":"listening"}',
        '{"t":true,"event":"listening"}',
        '{"t":1.5,"event":"name","name":"x","owned":1}',
        '{"t":1.5,"event":"name","owned":true}',
        '{"t":1.5,"event":"availability","services":"up"}',
    ],
    parse_record: [
        '{"t":1.5,"record":7}',
        '{"t":1.5,"record":"no record"}',
        '{"t":1.5}',
        json.dumps({"t": 1.5, "record": WHOLE + "tail"}),
        json.dumps({"t": 1.5, "record": WHOLE.replace("12.3456", "12.345")}),
    ],
}


@pytest.mark.parametrize("parser", NONSENSE, ids=lambda parser: parser.__name__[len("parse_") :])
def test_a_line_that_makes_no_sense_is_refused(parser):
    for line in NONSENSE[parser]:
        with pytest.raises(ParseError):
            parser(line, NOW)


@pytest.fixture(name="log")
def log_folder(tmp_path):
    (tmp_path / "log").mkdir()
    return tmp_path / "log"


def test_a_half_line_waits_for_its_other_half(log):
    path = log / "watchdog"
    journal = Journal(path, parse_watchdog)
    path.write_text("1.0 fe")
    assert journal.read(NOW) == []
    with path.open("a") as file:
        file.write("ed 1\n2.0 fee")
    assert journal.read(NOW) == [Feed(1.0, 1)]
    with path.open("a") as file:
        file.write("d 2\n")
    assert journal.read(NOW) == [Feed(2.0, 2)]


def test_a_missing_journal_is_an_empty_one_until_it_comes(log):
    journal = Journal(log / "watchdog", parse_watchdog)
    assert journal.read(NOW) == []
    (log / "watchdog").write_text("1.0 feed 1\n")
    assert journal.read(NOW) == [Feed(1.0, 1)]
    assert journal.read(NOW) == []


def test_an_emptied_or_replaced_journal_is_read_from_its_start(log):
    path = log / "watchdog"
    journal = Journal(path, parse_watchdog)
    path.write_text("1.0 feed 1\n2.0 feed 2\n")
    assert len(journal.read(NOW)) == 2
    path.write_text("3.0 feed 3\n")
    assert journal.read(NOW) == [Feed(3.0, 3)]
    fresh = log / "fresh"
    fresh.write_text("4.0 feed 4\n5.0 feed 5\n")
    fresh.rename(path)
    assert journal.read(NOW) == [Feed(4.0, 4), Feed(5.0, 5)]


def test_garbage_is_shown_where_it_stood_and_does_not_stop_the_journal(log):
    path = log / "watchdog"
    path.write_bytes(b"1.0 feed 1\n\xff\xfe what\n\n2.0 feed 2\n")
    assert Journal(path, parse_watchdog).read(NOW) == [
        Feed(1.0, 1),
        Unreadable(1.0, "watchdog", "\\xff\\xfe what"),
        Feed(2.0, 2),
    ]


def test_a_quick_script_does_not_end_before_it_began(log):
    path = log / "scripts"
    path.write_text("1.23 30_pictor stop begin\n1.23 30_pictor stop end 0\n")
    begin, end = Journal(path, parse_script).read(NOW)
    assert isinstance(begin, ScriptBegan) and isinstance(end, ScriptEnded)
    assert begin.at == end.at == pytest.approx(1.24)


def test_events_of_all_journals_come_in_the_order_of_time(log):
    (log / "boots").write_text("1.0 power-on\n")
    (log / "watchdog").write_text("1.5 open\n3.0 feed 1\n")
    (log / "scripts").write_text("2.00 mf-optware start begin\n")
    (log / "pings").write_text("2.5 pictor up\n")
    (log / "syslog").write_text("2.7 <10>hello\n")
    (log / "bus").write_text('{"t":2.2,"event":"listening"}\n')
    (log / "records").write_text(json.dumps({"t": 13, "record": WHOLE}) + "\n")
    (log / "wardex.err").write_text("oops\n")
    stream = EventStream(log.parent)
    events = stream.read(NOW)
    assert [type(event).__name__ for event in events] == (
        "Boot WatchdogEvent ScriptBegan ObserverState PingAnswered Syslog Feed Record".split()
    )
    assert stream.drain(NOW) == [StandardError(NOW, "oops")]
    assert [event.at for event in stream.seen] == sorted(event.at for event in stream.seen)


def test_a_young_event_waits_for_earlier_ones_still_on_their_way(log):
    (log / "watchdog").write_text("10.0 feed 1\n")
    stream = EventStream(log.parent)
    assert stream.read(10.0 + SETTLING_S / 2) == []
    (log / "pings").write_text("9.9 pictor up\n")
    assert stream.read(10.0 + SETTLING_S) == [PingAnswered(9.9, "pictor", "up"), Feed(10.0, 1)]


def test_the_end_of_a_story_waits_for_nothing(log):
    (log / "watchdog").write_text("10.0 feed 1\n")
    assert EventStream(log.parent).drain(10.0) == [Feed(10.0, 1)]
