"""The servers of a measurement are its own and leave nothing behind."""

import os
import shutil
from pathlib import Path

import pytest

from wardex_bench import box, processes, servers, timing
from wardex_bench.row import Context, NotHere, Unmeasured
from wardex_desk.redis_client import RedisClient


@pytest.fixture(name="context")
def a_context(tmp_path):
    return Context(Path("/p"), Path("/d"), tmp_path, True, lambda words: None)


def test_redis_answers_within_the_block_and_is_gone_after_it(context):
    with servers.redis_server(context) as socket:
        with RedisClient(str(socket)) as client:
            assert client.command("PING") == b"PONG"
            assert client.command("CONFIG", "GET", "save") == [b"save", b""]
    assert not socket.exists()
    assert not servers.accepts(socket)


def test_two_redis_servers_stand_side_by_side(context):
    with servers.redis_server(context, "one") as one, servers.redis_server(context, "two") as two:
        with RedisClient(str(one)) as first, RedisClient(str(two)) as second:
            first.command("SET", "key", "of one")
            assert second.command("GET", "key") is None


def test_bus_lets_anybody_own_and_call(context):
    with servers.bus(context) as address:
        names = processes.run(
            (
                *("dbus-send", f"--bus={address}", "--print-reply=literal"),
                *("--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.RequestName"),
                *("string:com.orvo.wardex", "uint32:0"),
            )
        )
        assert names.split() == ["uint32", "1"]
    assert list(context.scratch.glob("*.sock")) == []


def test_server_that_ends_at_once_is_told_with_its_words(context):
    with pytest.raises(Unmeasured, match="sh ended with 4: no port"):
        with servers.server(context, ("sh", "-c", "echo no port; exit 4"), lambda: False):
            pass


def test_wait_has_a_bound():
    with pytest.raises(Unmeasured, match="the bus starts: not within 0.05 s"):
        servers.wait_until(lambda: False, "the bus starts", 0.05)


def test_nobody_accepts_at_a_left_socket(context):
    assert not servers.accepts(context.scratch / "absent.sock")
    with servers.redis_server(context) as socket:
        assert servers.accepts(socket)


@pytest.mark.parametrize("place, choose", [(0, min), (-1, max)])
def test_a_processor_is_for_the_block_only(place, choose):
    before = os.sched_getaffinity(0)
    niceness = os.getpriority(os.PRIO_PROCESS, 0)
    with timing.on_processor(place):
        said = processes.run(("sh", "-c", "taskset -cp $$"))
        assert said.split()[-1] == str(choose(before))
        assert os.getpriority(os.PRIO_PROCESS, 0) in (timing.FIRST, niceness)
    assert os.sched_getaffinity(0) == before
    assert os.getpriority(os.PRIO_PROCESS, 0) == niceness


def test_real_time_is_the_lowest_fifo_priority_where_it_may_be_given():
    command = ("sh", "-c", "chrt -p $$")
    words = timing.real_time(command)
    said = processes.run(words)
    if words == list(command):
        pytest.skip("this user may not give it")
    assert "SCHED_FIFO" in said and said.split()[-1] == "1"


def in_box(context, words):
    try:
        return processes.run(box.boxed(context, ("sh", "-c", words)))
    except NotHere as reason:
        pytest.skip(str(reason))


def test_box_has_its_own_dev_tmp_and_processes(context):
    assert in_box(context, "ls /tmp /run; ls -d /dev/log /dev/watchdog || true; echo $$") != ""
    assert in_box(context, "ls /run") == ""
    assert len(in_box(context, "ls -d /proc/[0-9]*").split()) < 6


def test_box_shares_the_scratch_folder(context):
    in_box(context, f"echo here >{context.scratch}/note")
    assert (context.scratch / "note").read_text() == "here\n"


@pytest.mark.skipif(shutil.which("busybox") is None, reason="busybox is not installed")
def test_box_has_room_for_a_syslogd(context):
    words = "busybox syslogd -n -O /tmp/messages & until [ -S /dev/log ]; do :; done; echo there"
    assert in_box(context, words) == "there\n"
