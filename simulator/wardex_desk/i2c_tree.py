"""The part of /sys that shows the EEPROMs on I2C bus 2, as plain files and links."""

import os
import shutil
from pathlib import Path
from typing import Optional

ADAPTER = "devices/platform/soc/i2c.2/i2c-2"
DRIVERS = "bus/i2c/drivers"


class I2cTree:
    """Builds and changes the tree below one folder, which the box shows as /sys.

    Changes are seen at the next look: nothing is cached on either side.
    """

    def __init__(self, root: Path) -> None:
        self._root = root

    def create(self) -> None:
        """An I2C bus 2 with no EEPROM on it."""
        for folder in ("bus/i2c/devices", f"{DRIVERS}/at24", "class", "module"):
            (self._root / folder).mkdir(parents=True, exist_ok=True)
        self._device(ADAPTER, "OF_NAME=i2c\n", None)

    def put(
        self,
        device: str,
        image: Optional[bytes],
        driver: Optional[str] = "at24",
        parent: str = ADAPTER,
    ) -> None:
        """Shows `device` (such as 2-0054) with this content; None: a device without the file."""
        path = f"{parent}/{device}"
        if not (self._root / path).exists():
            self._device(path, f"DRIVER={driver}\nMODALIAS=i2c:24c02\n", driver)
        eeprom = self._root / path / "eeprom"
        if image is None:
            eeprom.unlink(missing_ok=True)
            return
        fresh = eeprom.with_suffix(".new")
        fresh.write_bytes(image)
        fresh.rename(eeprom)

    def content(self, device: str) -> Optional[bytes]:
        """What the device's file holds; None when there is no such device or file."""
        try:
            return (self._root / "bus/i2c/devices" / device / "eeprom").read_bytes()
        except OSError:
            return None

    def remove(self, device: str) -> None:
        """Takes the device off the bus; one that is not there is no error."""
        link = self._root / "bus/i2c/devices" / device
        if link.is_symlink():
            shutil.rmtree(link.resolve(), ignore_errors=True)
            link.unlink()

    def _device(self, path: str, uevent: str, driver: Optional[str]) -> None:
        folder = self._root / path
        folder.mkdir(parents=True, exist_ok=True)
        up = "../" * (path.count("/") + 1)
        _link(folder / "subsystem", f"{up}bus/i2c")
        (folder / "uevent").write_text(uevent)
        if driver is not None:
            (self._root / DRIVERS / driver).mkdir(parents=True, exist_ok=True)
            _link(folder / "driver", f"{up}{DRIVERS}/{driver}")
        _link(self._root / "bus/i2c/devices" / folder.name, f"../../../{path}")


def _link(place: Path, target: str) -> None:
    place.unlink(missing_ok=True)
    os.symlink(target, place)
