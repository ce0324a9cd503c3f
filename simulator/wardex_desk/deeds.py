"""The words of `./run do`: what each means, and what to say about a wrong one."""

from dataclasses import dataclass
from typing import Callable, Optional, Sequence

from wardex_desk.controls import Controls
from wardex_desk.eeprom import DAMAGES, DEVICE_OF_LETTER, Record
from wardex_desk.places import SCRIPTS, SERVICES

ANSWERS = ("up", "starting", "down", "delay", "error", "hang", "crash", "garbage")
QUORL_ANSWERS = ("up", "hang", "empty", "short", "down")
GARBAGE = ("none", "one", "three", "int", "variant", "swap", "struct", "huge", "giant")
SERVER_ACTIONS = ("stop", "start", "restart", "hang", "continue")
REDIS_SERVERS = ("cache", "store")
SUPERVISOR_ACTIONS = ("kill", "stop", "continue", "start")
SCRIPT_ACTIONS = ("start", "stop", "restart")
ONLY_AT_START = "; the supervisor looks when it starts: ./run do reboot"

Words = Sequence[str]


class WrongWords(ValueError):
    """The person's words make no deed; the message names the words that would."""


@dataclass(frozen=True)
class Deed:
    """Something to do to a device, and what to tell the person when it is done."""

    perform: Callable[[Controls], None]
    done: str


def deed(words: Words) -> Deed:
    """The deed that these words ask for; WrongWords when there is none."""
    if not words:
        raise WrongWords(f"do what? Say one of: {', '.join(SUBJECTS)}")
    subject = "corvane" if words[0] == "vistor" else words[0]
    return _chosen(subject, SUBJECTS, "do")(subject, words[1:])


def _chosen(word: Optional[str], table: dict[str, "Maker"], before: str) -> "Maker":
    _one_of(word, tuple(table), before)
    return table[str(word)]


def _one_of(word: Optional[str], choices: Words, before: str) -> str:
    if word is None or word not in choices:
        problem = "a word is missing" if word is None else f"'{word}' is not known"
        raise WrongWords(f"{problem} after '{before}': say one of {', '.join(choices)}")
    return word


def _word(words: Words, place: int) -> Optional[str]:
    return words[place] if place < len(words) else None


def _no_more(words: Words, count: int) -> None:
    if len(words) > count:
        raise WrongWords(f"'{words[count]}' is one word too many")


def _number(word: Optional[str], before: str, unit: str, highest: int) -> int:
    if word is None or not word.isdecimal() or int(word) > highest:
        raise WrongWords(f"after '{before}' comes a number from 0 to {highest} ({unit})")
    return int(word)


def _service(name: str, words: Words) -> Deed:
    choices = QUORL_ANSWERS if name == "quorl" else ANSWERS
    answer = _one_of(_word(words, 0), choices, name)
    step = answer
    if answer == "delay":
        step = f"delay {_number(_word(words, 1), 'delay', 'milliseconds', 3_600_000)}"
        if len(words) > 2:
            step += " " + _one_of(words[2], ("up", "starting", "down"), step)
        _no_more(words, 3)
    elif answer == "garbage":
        if len(words) > 1:
            step += " " + _one_of(words[1], GARBAGE, answer)
        _no_more(words, 2)
    else:
        _no_more(words, 1)
    return Deed(lambda controls: controls.order(name, step), f"{name} answers '{step}' from now on")


def _redis(_: str, words: Words) -> Deed:
    action = _one_of(_word(words, 0), SERVER_ACTIONS, "redis")
    which = [_one_of(word, REDIS_SERVERS, f"redis {action}") for word in words[1:2]]
    _no_more(words, 2)
    servers = tuple(f"redis-{name}" for name in which or REDIS_SERVERS)
    return Deed(
        lambda controls: controls.redis(action, servers), f"{' and '.join(servers)}: {action}"
    )


def _bus(_: str, words: Words) -> Deed:
    action = _one_of(_word(words, 0), SERVER_ACTIONS, "bus")
    _no_more(words, 1)
    return Deed(lambda controls: controls.bus(action), f"system bus: {action}")


def _supervisor(_: str, words: Words) -> Deed:
    action = _one_of(_word(words, 0), SUPERVISOR_ACTIONS, "supervisor")
    _no_more(words, 1)
    return Deed(lambda controls: controls.supervisor(action), f"supervisor: {action}")


def _developer(_: str, words: Words) -> Deed:
    switch = _one_of(_word(words, 0), ("on", "off"), "developer")
    _no_more(words, 1)
    return Deed(
        lambda controls: controls.developer(switch == "on"),
        f"developer mode's marker is {'set' if switch == 'on' else 'removed'}{ONLY_AT_START}",
    )


def _eeprom(_: str, words: Words) -> Deed:
    letter = _one_of(_word(words, 0), tuple(DEVICE_OF_LETTER), "eeprom")
    module = _word(words, 1)
    if module == "damage":
        kinds = (*DAMAGES, "gone")
        kind = _one_of(words[2], kinds, "damage") if len(words) > 2 else kinds[0]
        _no_more(words, 3)
        return Deed(
            lambda controls: controls.damage_eeprom(letter, kind),
            f"EEPROM {letter} is damaged ({kind}){ONLY_AT_START}",
        )
    if module is None or len(module) != 3 or not module.isascii():
        raise WrongWords(
            f"after 'eeprom {letter}' comes a type code of three characters, such as 351, "
            f"or 'damage' and one of {', '.join(DAMAGES)}, gone"
        )
    _no_more(words, 2)
    record = Record(letter, module)
    return Deed(
        lambda controls: controls.write_eeprom(record),
        f"EEPROM {letter} says {module}{ONLY_AT_START}",
    )


def _script(_: str, words: Words) -> Deed:
    calls = tuple(f"{script}.{action}" for script in SCRIPTS for action in SCRIPT_ACTIONS)
    call = _one_of(_word(words, 0), calls, "script")
    script, _, action = call.partition(".")
    knob = _one_of(_word(words, 1), ("delay", "fail", "ok"), call)
    if knob == "ok":
        _no_more(words, 2)
        return Deed(lambda controls: controls.knob(script, action), f"{call} works as built")
    unit, highest = ("milliseconds", 3_600_000) if knob == "delay" else ("exit status", 255)
    line = f"{knob} {_number(_word(words, 2), knob, unit, highest)}"
    _no_more(words, 3)
    return Deed(lambda controls: controls.knob(script, action, line), f"{call}: {line}")


def _reboot(_: str, words: Words) -> Deed:
    _no_more(words, 0)
    return Deed(lambda controls: controls.reboot(), "the device reboots")


Maker = Callable[[str, Words], Deed]

SUBJECTS: dict[str, Maker] = {
    **{name: _service for name in SERVICES},
    "redis": _redis,
    "bus": _bus,
    "supervisor": _supervisor,
    "developer": _developer,
    "eeprom": _eeprom,
    "script": _script,
    "reboot": _reboot,
}

HELP = (
    (
        "do SERVICE up|starting|down|error|hang",
        "how pictor, corvane (vistor) or wirl answers a ping",
    ),
    ("do SERVICE delay MS [LEVEL]", "the service answers that late"),
    ("do SERVICE crash", "the service aborts at the next ping"),
    ("do SERVICE garbage [KIND]", f"a wrong reply: {', '.join(GARBAGE)}"),
    ("do quorl up|hang|empty|short|down", "how the socket service answers"),
    ("do redis ACTION [cache|store]", f"{', '.join(SERVER_ACTIONS)} both servers or one"),
    ("do bus ACTION", f"{', '.join(SERVER_ACTIONS)} the system bus"),
    ("do supervisor ACTION", f"{', '.join(SUPERVISOR_ACTIONS)} the daemon; the watchdog counts on"),
    ("do developer on|off", "set or remove the marker of developer mode"),
    ("do eeprom LETTER CODE", "write the record F, D, M, I or A, such as: do eeprom F 351"),
    ("do eeprom LETTER damage [KIND]", f"spoil it: {', '.join(DAMAGES)}, gone"),
    (
        "do script NAME.ACTION delay MS",
        "make an init script slow: do script 30_pictor.restart delay 3000",
    ),
    ("do script NAME.ACTION fail STATUS", "make it fail and do nothing; 'ok' makes it work again"),
    ("do reboot", "reboot the device"),
)
