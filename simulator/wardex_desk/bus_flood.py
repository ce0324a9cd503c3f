"""A program on the device that floods the supervisor over the bus; runs inside the box.

    python3 -m wardex_desk.bus_flood SECONDS MEMBER [TEXT]

calls that method of the supervisor, with the text for its argument, as fast as the bus takes it,
and wants no answer. Prints how many calls it were.
"""

import sys

from wardex_desk.bus_wire import SUPERVISOR, call, connect
from wardex_desk.waiting import now

BURST = 100


def main(seconds: str, member: str, text: str = "") -> int:
    """Floods for so long."""
    burst = call(SUPERVISOR, member, text, wants_answer=False) * BURST
    end = now() + float(seconds)
    calls = 0
    with connect() as bus:
        while now() < end:
            bus.sendall(burst)
            calls += BURST
    print(calls)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
