"""The data files of the device families."""

import pytest

from wardex_desk import families
from wardex_desk.eeprom import DescriptionError


def modules(name):
    return {record.letter: record.module for record in families.load(name).records}


def test_there_is_a_data_file_for_each_family():
    assert families.names() == ["ZK4XX", "ZM7xx", "ZQ9XX", "none"]


def test_zk4xx_is_told_by_its_imager_record():
    assert modules("ZK4XX")["F"] == "340"
    assert families.load("ZK4XX").services == ("wirl", "quorl", "pictor", "corvane")


def test_zm7xx_is_told_by_its_imager_record():
    assert modules("ZM7xx")["F"] == "200"
    assert families.load("ZM7xx").services == ("wirl",)


def test_zq9xx_has_a_main_board_and_no_imager_record():
    assert modules("ZQ9XX")["M"] == "101"
    assert "F" not in modules("ZQ9XX")
    assert families.load("ZQ9XX").services == ("pictor", "corvane")


def test_none_has_no_record_at_all():
    assert families.load("none").records == ()


def test_unknown_family_is_answered_with_the_known_ones():
    with pytest.raises(DescriptionError, match="'ZX': use one of ZK4XX ZM7xx ZQ9XX none"):
        families.load("ZX")


@pytest.mark.parametrize(
    "text, complaint",
    [
        ("title = ", "Invalid value"),
        ('title = "t"', "services"),
        ('services = ["wirl"]', "title"),
        ('title = "t"\nservices = ["bello"]', "no service is called 'bello'"),
        ('title = "t"\nservices = []\n[[record]]\nletter = "F"\ncolour = "red"', "colour"),
        ('title = "t"\nservices = []\n[[record]]\nletter = "F"\nmodule = "1"', "3 characters"),
    ],
    ids=["no-toml", "no-services", "no-title", "unknown-service", "unknown-field", "short-module"],
)
def test_wrong_data_file_is_refused_by_name(tmp_path, text, complaint):
    (tmp_path / "wrong.toml").write_text(text)
    with pytest.raises(DescriptionError, match=complaint):
        families.load("wrong", tmp_path)
