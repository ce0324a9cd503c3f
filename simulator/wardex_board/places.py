"""Where the board's parts are on this machine."""

import os
from pathlib import Path

from wardex_desk.places import REPOSITORY

PACKAGE = Path(__file__).resolve().parent
GUEST = PACKAGE / "guest"
CACHE = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "wardex/armhf"
# Debian's packages as packaging/prepare-armhf unpacked them, and what it was made of.
DEBIAN = CACHE / "board"
DEBIAN_KEY = CACHE / "board.key"
# What is made of them once: kernel, device tree and root.
IMAGES = CACHE / "images"

BUILD = REPOSITORY / "build/armhf"
RUNS = REPOSITORY / "build/board"
