"""Entry of `python3 -m wardex_board`."""

import sys

from wardex_board.cli import main

sys.exit(main(sys.argv[1:]))
