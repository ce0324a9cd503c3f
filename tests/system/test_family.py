"""Who the device is: its EEPROMs decide which services the supervisor knows, or that it gives up."""

import pytest
from camera import PICTOR, QUORL, SUPERVISES, VISTOR, WIRL, text

from wardex_desk.eeprom import DAMAGES, Record

NO_FAMILY = "Unable to detect the device family"
GIVES_UP = "wardex: Unable to register Services. Giving up!"
SERVICES = {
    "ZK4XX": [VISTOR, PICTOR, WIRL, QUORL],
    "ZM7xx": [WIRL],
    "ZQ9XX": [VISTOR, PICTOR],
}
# The record that decides, with a module of each family.
DECIDING = {
    "ZK4XX": Record("F", "340"),
    "ZM7xx": Record("F", "200"),
    "ZQ9XX": Record("M", "101"),
}
FAULTS = [*DAMAGES, "gone", "no file", "no driver", "other driver"]


@pytest.fixture
def identified(put_on_desk):
    """Boots a device with these records only and no services that could be judged by mistake.

    In developer mode, because a family without the judged services keeps a real-time supervisor
    busy all the time.
    """

    def make(*records, prepare=lambda camera: None, developer=True):
        camera = put_on_desk(
            family="none", without={"services"}, developer=developer, stored_log_configuration={}
        )
        for record in records:
            camera.write_eeprom(record)
        prepare(camera)
        camera.power_on()
        return camera

    return make


def family_of(camera):
    """The family that the supervisor has found."""
    camera.await_bus_name()
    camera.await_true(lambda: len(camera.texts()) >= 2, "the family")
    lines = [line for line in camera.texts("WARN") if line.startswith("Registerinng ")]
    assert len(lines) == 1
    return (
        lines[0].removeprefix("Registerinng services for the ").removesuffix(" family of devices")
    )


def gives_up(camera):
    """Whether the supervisor said so, ended with 1 and did nothing else."""
    assert camera.await_end() == 1
    camera.await_text(GIVES_UP)
    assert [(record.level, record.text) for record in camera.records()][1:] == [
        ("WARN", NO_FAMILY),
        ("FATAL", GIVES_UP),
    ]
    assert "com.orvo.wardex" not in camera.owned_names()
    return camera.watchdog() == ["exit"]


def spoil(camera, record, fault):
    """Makes the record of an EEPROM unusable in one way."""
    if fault in ("no driver", "other driver"):
        camera.eeproms.remove(record.device)
        driver = None if fault == "no driver" else "eeprom"
        camera.eeproms.put(record.device, record.image(), driver=driver)
    elif fault == "no file":
        camera.eeproms.put(record.device, None)
    else:
        camera.damage_eeprom(record.letter, fault)


@pytest.mark.parametrize(
    "letter, module, family",
    [
        *(("F", module, "ZK4XX") for module in ("340", "341", "342", "343", "350", "351")),
        *(("F", module, "ZM7xx") for module in ("200", "201")),
        *(("M", module, "ZQ9XX") for module in ("101", "161", "162")),
    ],
)
def test_each_module_leads_to_its_family(identified, letter, module, family):
    assert family_of(identified(Record(letter, module))) == family


@pytest.mark.parametrize("family", SERVICES)
def test_family_has_its_services_and_no_others(identified, family):
    camera = identified(DECIDING[family])
    assert family_of(camera) == family
    for service in (VISTOR, PICTOR, WIRL, QUORL):
        status = camera.call("getServiceStatus", text(service))
        expected = "down" if service in SERVICES[family] else "unknown"
        assert (status.code, status.values) == (0, (expected,)), service


@pytest.mark.parametrize(
    "first, second, family",
    [
        ("340", "101", "ZK4XX"),
        ("351", "162", "ZK4XX"),
        ("200", "101", "ZM7xx"),
        ("201", "161", "ZM7xx"),
        ("999", "101", "ZQ9XX"),
    ],
)
def test_imager_module_is_asked_before_the_main_board(identified, first, second, family):
    assert family_of(identified(Record("F", first), Record("M", second))) == family


@pytest.mark.parametrize("fault", FAULTS)
@pytest.mark.parametrize("family", SERVICES)
def test_device_with_a_fault_in_the_deciding_record_is_given_up(identified, family, fault):
    record = DECIDING[family]
    assert gives_up(identified(record, prepare=lambda camera: spoil(camera, record, fault)))


@pytest.mark.parametrize("fault", FAULTS)
@pytest.mark.parametrize("family", ["ZK4XX", "ZM7xx"])
def test_fault_in_the_imager_record_leaves_the_main_board_to_decide(identified, family, fault):
    record = DECIDING[family]
    camera = identified(
        record, Record("M", "101"), prepare=lambda camera: spoil(camera, record, fault)
    )
    assert family_of(camera) == "ZQ9XX"


@pytest.mark.parametrize("fault", FAULTS)
def test_fault_in_the_main_boards_record_does_not_matter_beside_a_good_imager(identified, fault):
    board = Record("M", "101")
    camera = identified(
        Record("F", "340"), board, prepare=lambda camera: spoil(camera, board, fault)
    )
    assert family_of(camera) == "ZK4XX"


@pytest.mark.parametrize("version", ["02", "03"])
def test_record_of_a_known_version_counts(identified, version):
    assert family_of(identified(Record("F", "340", version))) == "ZK4XX"


@pytest.mark.parametrize("version", ["00", "01", "04", "20", "  "])
def test_record_of_another_version_does_not_count(identified, version):
    assert gives_up(identified(Record("F", "340", version)))


@pytest.mark.parametrize("module", ["339", "344", "352", "34 ", "34a", "101", "300"])
def test_module_of_no_family_is_given_up(identified, module):
    assert gives_up(identified(Record("F", module)))


@pytest.mark.parametrize("letter", ["D", "I", "A"])
def test_other_modules_do_not_decide(identified, letter):
    assert gives_up(identified(Record(letter, "340")))


def test_record_at_the_place_of_another_module_does_not_count(identified):
    def misplace(camera):
        camera.eeproms.put("2-0054", Record("M", "101").image())

    assert gives_up(identified(prepare=misplace))


def test_record_longer_than_needed_counts(identified):
    def lengthen(camera):
        camera.eeproms.put("2-0054", Record("F", "340").image() + b"\xff" * 128)

    assert family_of(identified(prepare=lengthen)) == "ZK4XX"


def test_supervision_is_told_to_begin_even_if_the_device_is_then_given_up(identified):
    camera = identified(developer=False)
    assert gives_up(camera)
    assert camera.texts()[0] == SUPERVISES
    assert camera.instance.read("/proc/sys/kernel/panic") == "0\n"


def test_device_is_looked_at_again_at_the_next_boot_only(identified):
    camera = identified(DECIDING["ZK4XX"])
    assert family_of(camera) == "ZK4XX"
    camera.damage_eeprom("F", "gone")
    assert camera.call("getServiceStatus", text(PICTOR)).values == ("down",)
    camera.write_eeprom(DECIDING["ZQ9XX"])
    camera.reboot()
    family = "Registerinng services for the ZQ9XX family of devices"
    camera.await_text(family)
    assert camera.texts().count(family) == 1
