"""Starts the command: python3 -m wardex_desk, as ./run does."""

import sys

from wardex_desk.cli import main

sys.exit(main(sys.argv[1:]))
