"""Starts the command: python3 -m wardex_bench, as ./bench does."""

import sys

from wardex_bench.cli import main

sys.exit(main(sys.argv[1:]))
