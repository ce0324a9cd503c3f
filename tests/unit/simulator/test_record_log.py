"""Log records for a person's eyes."""

from wardex_desk.record_log import readable

WARN = '{"T":"12.3456", "P":"42", "C":"WARN", "S":"wardex", "M":"Bello is dead!!!"}'


def test_record_becomes_one_line():
    assert readable(WARN, colour=False) == "     12.3456 WARN  wardex[42] Bello is dead!!!"


def test_escapes_are_taken_off():
    raw = WARN.replace("Bello", r"\"Bello\" \\ ")
    assert '"Bello" \\  is dead' in readable(raw, colour=False)


def test_level_has_its_colour_only_when_asked_for():
    assert readable(WARN, colour=True) == f"\033[33m{readable(WARN, colour=False)}\033[0m"
    info = WARN.replace("WARN", "INFO")
    assert readable(info, colour=True) == readable(info, colour=False)


def test_text_that_is_no_record_comes_as_it_is():
    assert readable("half a rec", colour=True) == "?? half a rec"
