"""The device families that can be put on the desk, from the data files in simulator/device/families."""

import tomllib
from dataclasses import dataclass
from pathlib import Path

from wardex_desk.eeprom import DescriptionError, Record
from wardex_desk.places import DEVICE_FILES, SERVICES

FOLDER = DEVICE_FILES / "families"
DEFAULT = "ZK4XX"


@dataclass(frozen=True)
class Family:
    """The modules of a device and the services that its package starts."""

    name: str
    title: str
    services: tuple[str, ...]
    records: tuple[Record, ...]


def names() -> list[str]:
    """The families there are data files for, in order."""
    return sorted(path.stem for path in FOLDER.glob("*.toml"))


def load(name: str, folder: Path = FOLDER) -> Family:
    """Reads a family's data file; DescriptionError when there is none or it is wrong."""
    path = folder / f"{name}.toml"
    try:
        text = path.read_text(encoding="utf-8")
    except FileNotFoundError:
        raise DescriptionError(
            f"no family is called '{name}': use one of {' '.join(names())}"
        ) from None
    try:
        data = tomllib.loads(text)
        records = tuple(Record(**record) for record in data.get("record", []))
        services = tuple(data["services"])
        title = str(data["title"])
    except (tomllib.TOMLDecodeError, KeyError, TypeError) as error:
        raise DescriptionError(f"{path}: {error}") from error
    unknown = [service for service in services if service not in SERVICES]
    if unknown:
        raise DescriptionError(f"{path}: no service is called '{unknown[0]}'")
    return Family(name, title, services, records)
