"""The device's log records for a person: ./run logs."""

import json
import re
from typing import Callable, Iterator, Optional, TextIO

from wardex_desk.controls import Controls
from wardex_desk.redis_client import RedisError
from wardex_desk.waiting import pause

RECORDS = "LOG:ENTRIES"
STEP = 0.1
RECORD = re.compile(
    r'\{"T":"(?P<time>[0-9.]+)", "P":"(?P<pid>-?[0-9]+)", "C":"(?P<level>[A-Z]+)",'
    r' "S":"(?P<source>[^"]*)", "M":"(?P<text>.*)"\}',
    re.DOTALL,
)
COLOURS = {
    "WARN": "33",
    "ERROR": "31",
    "FATAL": "1;31",
    "EMERG": "1;31",
    "TRACE": "2",
    "DEBUG": "2",
}


def readable(raw: str, colour: bool) -> str:
    """One line for one record; a text that is no record comes as it is."""
    record = RECORD.fullmatch(raw)
    if record is None:
        return f"?? {raw}"
    text = re.sub(r"\\(.)", r"\1", record["text"], flags=re.DOTALL)
    line = f"{record['time']:>12} {record['level']:<5} {record['source']}[{record['pid']}] {text}"
    shade = COLOURS.get(record["level"])
    return f"\033[{shade}m{line}\033[0m" if colour and shade else line


def stored(controls: Controls) -> list[str]:
    """The records that Redis holds, oldest first; RedisError when it does not answer."""
    with controls.connect_redis("redis-cache") as redis:
        reply = redis.command("LRANGE", RECORDS, "0", "-1")
    if not isinstance(reply, list):
        return []
    return [item.decode(errors="replace") for item in reply if isinstance(item, bytes)]


def arriving(controls: Controls, is_over: Callable[[], bool]) -> Iterator[str]:
    """The records that come from now on, across restarts of Redis and of the device."""
    journal = controls.log("records")
    place = journal.stat().st_size if journal.exists() else 0
    while not is_over():
        if not journal.exists():
            pause(STEP)
            continue
        with open(journal, encoding="utf-8") as lines:
            lines.seek(place)
            for line in iter(lines.readline, ""):
                if not line.endswith("\n"):
                    break
                place += len(line.encode())
                raw: Optional[str] = json.loads(line).get("record")
                if raw is not None:
                    yield raw
        pause(STEP)


def show(controls: Controls, stream: TextIO, colour: bool, follow: bool) -> int:
    """Prints what is stored and, when asked to, what comes until the device is off."""
    try:
        records = stored(controls)
    except (RedisError, OSError):
        print("Redis does not answer: no stored records (./run do redis start)", file=stream)
        records = []
    for raw in records:
        print(readable(raw, colour), file=stream)
    if follow:
        for raw in arriving(controls, lambda: not controls.instance.is_running()):
            print(readable(raw, colour), file=stream, flush=True)
    return 0
