"""A program on the device that owns a bus name, and does nothing else; runs inside the box.

    python3 -m wardex_desk.bus_squatter NAME
"""

import sys

from wardex_desk.bus_wire import BUS, call, connect


def main(name: str) -> int:
    """Owns the name until the program is ended, or the bus."""
    with connect() as bus:
        bus.sendall(call(BUS, "RequestName", name))
        while bus.recv(4096):
            pass
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
