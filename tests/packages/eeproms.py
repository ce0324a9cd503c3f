"""Writes the device tree of a camera, with its EEPROMs, into a folder that a box shows as /sys."""

import sys
from pathlib import Path

from wardex_desk import families
from wardex_desk.i2c_tree import I2cTree

tree = I2cTree(Path(sys.argv[1]))
tree.create()
for record in families.load(families.DEFAULT).records:
    tree.put(record.device, record.image())
