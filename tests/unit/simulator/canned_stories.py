"""Devices that did exactly what the rules say, one for each scenario that has a rule of its own."""

from canned import Canned

from wardex_desk import judge_texts as texts

PICTOR = "com.orvo.pictor"
VISTOR = "com.orvo.vistor"
UP = 103.2


def started(family="ZK4XX", at=100.0, reason="power-on"):
    """Both services found up: pictor after its first ping, corvane after its own."""
    camera = Canned(reason, at)
    camera.call(at + 0.1, "mf-optware", "start")
    camera.supervisor_starts(at + 0.5, texts.STARTS, family).armed(at + 0.6)
    camera.enters(at + 1.0, "system", "SuprStartingSystem")
    for actor, name, interval, up in (("corvane", VISTOR, 2200, 3.2), ("pictor", PICTOR, 1000, 2)):
        for state, moment in (("SuprStarting", 1.0), ("SuprUp", up)):
            camera.enters(at + moment + 0.001, actor, state)
            camera.trace(at + moment + 0.002, texts.ping_interval(name, interval))
    camera.announces(at + 2.01, "up", "down").announces(at + 3.21, "up", "up")
    return camera.enters(at + 3.205, "system", "SuprStableSystem")


def healthy(family="ZK4XX", at=100.0, reason="power-on"):
    return started(family, at, reason).feeds(*(at + 2 + i for i in range(12)))


def _down(camera, at, reason, strikes=()):
    for moment in strikes:
        camera.trace(moment, texts.ping_failed(PICTOR))
    camera.trace(at, reason).enters(at + 0.01, "pictor", "SuprDown")
    camera.enters(at + 0.02, "system", "SuprUnstableSystem").announces(at + 0.03, "down", "up")


def _revived(camera, at):
    camera.enters(at, "pictor", "SuprUp").enters(at + 0.01, "system", "SuprStableSystem")
    return camera.announces(at + 0.02, "up", "up")


def hang():
    camera = started()
    _down(camera, 113.1, texts.THRESHOLD, strikes=(107, 109, 111, 113))
    camera.record(116.2, "WARN", texts.considered_dead(PICTOR))
    camera.call(116.21, "30_pictor", "stop").call(116.5, "30_pictor", "restart")
    camera.enters(116.8, "pictor", "SuprStarting")
    camera.feeds(*(102 + 2 * i for i in range(12)))
    return _revived(camera, 117.8)


def crash():
    camera = started()
    _down(camera, 107.0, texts.not_registered(PICTOR), strikes=(106, 107))
    camera.record(109.02, "WARN", texts.considered_dead(PICTOR))
    camera.call(109.1, "30_pictor", "restart").enters(109.4, "pictor", "SuprStarting")
    camera.feeds(*(102 + i for i in range(15)))
    return _revived(camera, 110.4)


def slow_start():
    camera = Canned().call(100.1, "mf-optware", "start")
    camera.supervisor_starts(100.5, texts.STARTS, "ZK4XX").armed(100.6)
    camera.enters(101, "system", "SuprStartingSystem")
    camera.enters(101, "corvane", "SuprStarting").enters(101, "pictor", "SuprStarting")
    camera.enters(103.2, "corvane", "SuprUp").announces(103.21, "down", "up")
    camera.enters(107.05, "system", "SuprUnstableSystem").enters(108, "pictor", "SuprUp")
    camera.enters(108.01, "system", "SuprStableSystem").announces(108.02, "up", "up")
    camera.trace(110, texts.RUN_LEVEL_STARTING).enters(110.01, "pictor", "SuprStarting")
    camera.enters(112, "pictor", "SuprUp")
    camera.record(112.01, "WARN", texts.suspicious(PICTOR)).announces(112.02, "up", "up")
    return camera.feeds(*(102 + i for i in range(14)))


def flapping():
    camera = started()
    for moment in (105, 107, 109):
        camera.trace(moment, texts.ping_failed(PICTOR))
    for begin, end in ((112, 117), (118, 123)):
        _down(camera, begin, texts.RUN_LEVEL_DOWN)
        camera.enters(begin + 2, "pictor", "SuprStarting")
        _revived(camera, end)
    _down(camera, 124, texts.RUN_LEVEL_DOWN)
    camera.record(124.6, "FATAL", texts.RESTARTS_PACKAGE).syslog(124.61, texts.RESTARTS_PACKAGE)
    camera.call(124.7, "mf-optware", "restart", 0.5)
    camera.enters(125.3, "system", "SuprStartingSystem").enters(127, "pictor", "SuprStarting")
    camera.feeds(*(102.5 + i for i in range(23)), *(126.3 + i for i in range(4)))
    return _revived(camera, 128)


def dead():
    camera = Canned().call(100.1, "mf-optware", "start")
    camera.supervisor_starts(100.5, texts.STARTS, "ZK4XX").armed(100.6)
    camera.enters(101, "pictor", "SuprStarting").announces(103.2, "down", "up")
    for turn in range(4):
        at = 101 + turn * 18
        camera.enters(at, "system", "SuprStartingSystem")
        camera.enters(at + 1.5, "pictor", "SuprDown").announces(at + 1.51, "down", "up")
        camera.enters(at + 6.01, "system", "SuprUnstableSystem")
        for moment in (at + 8.5, at + 11.8, at + 15.1):
            camera.record(moment, "WARN", texts.considered_dead(PICTOR))
            camera.call(moment + 0.02, "30_pictor", "stop", 0.1)
            camera.call(moment + 0.15, "30_pictor", "restart", 0.1)
        camera.feeds(*(at + i for i in range(1, 18)))
        if turn < 3:
            camera.record(at + 17.01, "FATAL", texts.RESTARTS_PACKAGE)
            camera.syslog(at + 17.02, texts.RESTARTS_PACKAGE)
            camera.call(at + 17.1, "mf-optware", "restart", 0.8)
    camera.record(172.01, "EMERG", texts.TOO_MANY_RESTARTS)
    camera.enters(172.02, "system", "SuprRebootSystem")
    camera.record(172.03, "EMERG", texts.RESTARTS_SYSTEM)
    camera.syslog(172.04, texts.RESTARTS_SYSTEM_SYSLOG).call(172.05, "reboot")
    again = Canned("reboot", 173.5).supervisor_starts(174.5, texts.STARTS, "ZK4XX")
    return camera.then(again)


def developer():
    camera = Canned().call(100.1, "mf-optware", "start")
    camera.supervisor_starts(100.5, texts.STARTS_AS_DEVELOPER, "ZK4XX")
    camera.enters(101, "corvane", "SuprStarting").enters(103.2, "corvane", "SuprUp")
    camera.enters(101, "pictor", "SuprStarting").enters(102, "pictor", "SuprDown")
    camera.announces(102.01, "down", "down").announces(103.21, "down", "up")
    camera.record(104, "WARN", texts.considered_dead_as_developer(PICTOR))
    for turn in range(4):
        at = 101 + turn * 17
        camera.enters(at, "system", "SuprStartingSystem")
        camera.enters(at + 6, "system", "SuprUnstableSystem")
    camera.record(117.9, "FATAL", texts.WOULD_RESTART_PACKAGE)
    camera.syslog(117.91, texts.WOULD_RESTART_PACKAGE)
    camera.record(169.0, "EMERG", texts.TOO_MANY_RESTARTS)
    camera.enters(169.01, "system", "SuprRebootSystem")
    camera.record(169.02, "EMERG", texts.WOULD_RESTART_SYSTEM)
    camera.syslog(169.03, texts.WOULD_RESTART_SYSTEM_SYSLOG)
    camera.enters(175, "pictor", "SuprStarting")
    return _revived(camera, 176)


def supervisor_killed():
    camera = started().feeds(*(102 + i for i in range(8)))
    camera.supervisor_ends(109.5, 137)
    camera.reset(113.0)
    return camera.then(healthy(at=114.0, reason="watchdog"))


def no_identity():
    camera = Canned().call(100.1, "mf-optware", "start").supervisor_starts(100.5, texts.STARTS)
    camera.record(100.6, "WARN", texts.NO_FAMILY).record(100.7, "FATAL", texts.GIVES_UP)
    return camera.supervisor_ends(100.8, 1)


def family_zm7xx():
    camera = Canned().call(100.1, "mf-optware", "start")
    camera.supervisor_starts(100.5, texts.STARTS, "ZM7xx").armed(100.6)
    camera.enters(101, "system", "SuprStartingSystem")
    for actor, name in (("corvane", VISTOR), ("pictor", PICTOR)):
        camera.enters(101, actor, "SuprStarting").trace(101.01, texts.ping_interval(name, 0))
        for i in range(20):
            camera.record(101.1 + i / 100, "ERROR", texts.unknown_service(name))
        camera.enters(102, actor, "SuprDown").announces(102.01, "down", "down")
        camera.record(107.3, "WARN", texts.considered_dead(name))
    camera.enters(107.2, "system", "SuprUnstableSystem")
    return camera.feeds(*(102 + i for i in range(6)))


def family_zk4xx():
    return healthy()


def family_zq9xx():
    return healthy("ZQ9XX")


STORIES = {
    maker.__name__.replace("_", "-"): maker
    for maker in (
        healthy,
        hang,
        crash,
        slow_start,
        flapping,
        dead,
        supervisor_killed,
        developer,
        no_identity,
        family_zk4xx,
        family_zm7xx,
        family_zq9xx,
    )
}
