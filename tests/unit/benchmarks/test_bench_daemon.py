"""What is read out of the kernel's figures about the daemon."""

import pytest
from wardex_bench.row import Result, Unmeasured
from wardex_bench.rows import daemon

MAPS = """55d0c0000000-55d0c0020000 rw-p 00000000 00:00 0                          [heap]
7f0000000000-7f0000001000 ---p 00000000 00:00 0
7f0000001000-7f0000041000 rw-p 00000000 00:00 0
7f0000050000-7f0000060000 rw-p 00000000 00:00 0
7f0000070000-7f0000071000 ---p 00000000 00:00 0
7f0000071000-7f00000fd000 rw-p 00000000 00:00 0
7f0000200000-7f0000201000 ---p 00000000 08:01 7                          /usr/lib/some.so
7f0000201000-7f0000202000 rw-p 00000000 08:01 7                          /usr/lib/some.so
7ffd00000000-7ffd00021000 rw-p 00000000 00:00 0                          [stack]
"""


def test_thread_stacks_are_the_areas_above_a_guard():
    assert daemon._thread_stacks(MAPS) == [256.0, 560.0]


def test_figure_of_the_kernel_is_found_by_its_whole_name():
    assert daemon._kib("VmLck:\t      12 kB\nVmLckX:\t  13 kB\n", "VmLck") == 12.0


def test_missing_figure_is_told():
    with pytest.raises(Unmeasured, match="the kernel tells no VmLck"):
        daemon._kib("VmRSS:\t12 kB\n", "VmLck")


@pytest.mark.parametrize(
    "locked, resident, met",
    [
        (57_000, 57_000, True),
        (57_001, 57_001, False),
        (50_500, 50_000, True),
        (50_501, 50_000, False),
    ],
)
def test_locked_memory_has_two_limits(locked, resident, met):
    assert daemon._is_locked_well(Result(locked, resident, locked / resident)) == met
