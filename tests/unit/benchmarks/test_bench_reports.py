"""Reading what the counting tools report."""

from pathlib import Path

import pytest

from wardex_bench import callgrind, syscalls
from wardex_bench.row import Context, Unmeasured

CALLGRIND = """# callgrind format
version: 1
cmd: bin/bench/log-writes
events: Ir

fn=(12) main
0 17

totals: 34943
"""

STRACE = """% time     seconds  usecs/call     calls    errors syscall
------ ----------- ----------- --------- --------- ----------------
 38.20    0.026417          13      2008           sendto
 34.42    0.023805          11      2001         3 recvfrom
  0.00    0.000000           0         1         1 access
------ ----------- ----------- --------- --------- ----------------
100.00    0.069157          11      4010         4 total
"""


@pytest.fixture(name="context")
def a_context(tmp_path):
    return Context(Path("/p"), Path("/d"), tmp_path, False, lambda words: None)


def test_callgrind_total_is_found():
    assert callgrind.total(CALLGRIND) == 34943
    assert callgrind.total("events: Ir\nsummary: 12\n") == 12


def test_callgrind_report_without_total_is_refused():
    with pytest.raises(Unmeasured, match="callgrind wrote no total"):
        callgrind.total("events: Ir\nfn=(12) totals: 3\n")


def test_instructions_of_an_operation_leave_out_start_and_end(context, monkeypatch):
    start_and_end = 1_000_000
    monkeypatch.setattr(
        callgrind, "instructions", lambda _, command, __: start_and_end + 250 * int(command[-1])
    )
    assert callgrind.per_operation(context, lambda count: ["it", str(count)], 10, 110) == 250


def test_strace_table_is_read_with_and_without_errors():
    assert syscalls.counted(STRACE) == {"sendto": 2008, "recvfrom": 2001, "access": 1}


def test_system_calls_of_an_operation_leave_out_start_and_end(context, monkeypatch):
    def of_run(_, command):
        count = int(command[-1])
        return {"sendto": 5 + count, "recvfrom": 2 * count, "openat": 30}

    monkeypatch.setattr(syscalls, "of_run", of_run)
    calls = syscalls.per_operation(context, lambda count: ["it", str(count)], 10, 110)
    assert calls == {"openat": 0, "recvfrom": 2, "sendto": 1}
    assert syscalls.sum_of(calls, syscalls.WRITING) == 1
    assert syscalls.sum_of(calls, syscalls.READING) == 2
