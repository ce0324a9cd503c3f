"""Boards that never were: what a life tells when all is well, scenario by scenario.

A life is a list of lines as they come over the second serial line, without their nonce.
"""

from wardex_board.machine import POWER_OFF, RESET, WATCHDOG
from wardex_board.report import Life, parse
from wardex_board.scenarios_identity import STEPS
from wardex_desk import judge_texts as texts

PICTOR, VISTOR = "com.orvo.pictor", "com.orvo.vistor"
STARTING, STABLE = "SuprStartingSystem", "SuprStableSystem"
UNSTABLE, REBOOT = "SuprUnstableSystem", "SuprRebootSystem"
MODULES = (0x50, 0x52, 0x53, 0x54, 0x55)

# How the lives of each run end, by scenario.
ENDS = {
    "identity": {
        "written": [RESET] * 4 + [POWER_OFF],
        "imager": [POWER_OFF],
        "missing": [POWER_OFF],
    },
    "supervise": {"hang": [POWER_OFF]},
    "escalate": {"reboot": [RESET, POWER_OFF], "refused": [WATCHDOG, POWER_OFF]},
    "hang": {"signals": [WATCHDOG] * 3 + [POWER_OFF]},
    "developer": {"hour": [POWER_OFF]},
    "real-time": {"hogs": [POWER_OFF]},
    "boot-loop": {"fault": [RESET] * 3},
    "figures": {"board": [RESET, POWER_OFF]},
}


def record(at, level, text):
    return f'{at} record {{"T":"{at:.4f}", "P":"150", "C":"{level}", "S":"wardex", "M":"{text}"}}'


def enters(at, *states):
    return [record(at, "TRACE", f"{state}::entry") for state in states]


def starts(family="ZK4XX"):
    return [record(4.0, "WARN", texts.STARTS), record(4.1, "WARN", texts.FAMILY[family])]


def well(family="ZK4XX"):
    return [*starts(family), *enters(4.2, STARTING), *enters(6.4, STABLE)]


def feeds(begin, count):
    return [f"{begin + count} feed {begin + number:.6f}" for number in range(count)]


def script(at, name, action, lasts=0.2):
    return [
        f"{at} script {at:.2f} {name} {action} begin",
        f"{at} script {at + lasts:.2f} {name} {action} end 0",
    ]


def modules(*fitted):
    drivers = {place: "at24" if place in fitted else "none" for place in MODULES} | {0x56: "at24"}
    return [f"6 module 2-00{place:02x} {drivers[place]}" for place in sorted(drivers)]


def identified(step, fitted=MODULES):
    lines = [f"4 step {step}", *modules(*fitted)]
    if step in ("ZK4XX", "ZQ9XX"):
        return [*lines, *well(step), "6 supervisor runs", "6 watchdog active"]
    if step != "ZM7xx":
        return [
            *lines,
            record(4.0, "WARN", texts.STARTS),
            record(4.1, "WARN", texts.NO_FAMILY),
            record(4.2, "FATAL", texts.GIVES_UP),
            "6 supervisor gone",
            "6 watchdog inactive",
        ]
    return [
        *lines,
        record(4.0, "WARN", texts.STARTS_AS_DEVELOPER),
        record(4.1, "WARN", texts.FAMILY["ZM7xx"]),
        *enters(4.2, STARTING),
        *(record(4.3, "ERROR", texts.unknown_service(name)) for name in (VISTOR, PICTOR)),
        *(record(4.4, "WARN", texts.considered_dead_as_developer(n)) for n in (VISTOR, PICTOR)),
        "6 supervisor runs",
        "6 watchdog inactive",
    ]


def rounds(service=PICTOR, name="30_pictor"):
    """Three package restarts, and the decision to reboot."""
    lines = [*starts(), *script(3.5, "mf-optware", "start")]
    for number in range(4):
        at = 10.0 + 20 * number
        lines += [*enters(at, STARTING), *enters(at + 6, UNSTABLE)]
        lines += [record(at + 8, "WARN", texts.considered_dead(service))]
        lines += [*script(at + 8, name, "stop"), *script(at + 8.5, name, "restart")]
        if number < 3:
            lines += [record(at + 17, "FATAL", texts.RESTARTS_PACKAGE)]
            lines += script(at + 17, "mf-optware", "restart", 2)
    return [
        *lines,
        record(88, "EMERG", texts.TOO_MANY_RESTARTS),
        record(88, "EMERG", texts.RESTARTS_SYSTEM),
        *enters(88, REBOOT),
        *feeds(10, 68),
    ]


def goes_down():
    return ["90 init goes down", "91 init is down"]


def loses(signal):
    return [*well(), f"20 signal {signal}", "21 without", "79.5 without"]


def developers_hour():
    return [
        "9 supervisor 150",
        "3610 supervisor 150",
        record(4.0, "WARN", texts.STARTS_AS_DEVELOPER),
        record(4.1, "WARN", texts.FAMILY["ZK4XX"]),
        record(12, "WARN", texts.considered_dead_as_developer(PICTOR)),
        record(27, "FATAL", texts.WOULD_RESTART_PACKAGE),
        *enters(10, *(STARTING, UNSTABLE) * 4, REBOOT),
        record(78, "EMERG", texts.TOO_MANY_RESTARTS),
        record(78, "EMERG", texts.WOULD_RESTART_SYSTEM),
        "3610 descriptors 0",
        "3610 watchdog inactive",
        "3610 panic 0",
        *enters(3612, STABLE),
    ]


def restarted_service():
    return [
        *well(),
        "12.5 hang",
        record(20, "WARN", texts.considered_dead(PICTOR)),
        *enters(18, UNSTABLE),
        *script(20, "30_pictor", "stop"),
        *script(20.3, "30_pictor", "restart"),
        *enters(24, STABLE),
        "25 process-before 140",
        "25 process-after 180",
        "25 strikes 4",
        "25 signals 2",
        f"25 availability {PICTOR} down {VISTOR} up {PICTOR} up {VISTOR} up",
        "25 status stable, 2 of 2 up",
    ]


def beside_hogs():
    return [
        *well(),
        "8 policy main SCHED_FIFO 1 ",
        "8 policy other SCHED_OTHER 0 ",
        "8 policy other SCHED_OTHER 0 ",
        "8 panic 60",
        "8 available 380000",
        *(f"8 vm-before {name} 7" for name in ("allocstall_normal", "oom_kill")),
        "8 faults-before 500 3",
        "610 faults-after 500 3",
        "610 supervisor 150 150",
        "610 hog-s 400",
        "610 least 3000",
        *(f"610 vm-after {name} 9" for name in ("allocstall_normal", "oom_kill")),
        "610 memory VmLck: 47000 kB",
        "610 memory VmRSS: 46000 kB",
        *feeds(10, 600),
    ]


def measured():
    return [
        "5 start-ns 180000000",
        "7 stable-at 6.4",
        *(f"37 memory {name}: 46000 kB" for name in ("VmLck", "VmRSS", "RssAnon")),
        "97 idle-ns 60000000",
        *feeds(5, 90),
    ]


GOOD = {
    "identity": lambda: {
        "written": [identified(step) for step in STEPS],
        "imager": [identified("ZK4XX", [0x54])],
        "missing": [identified("missing", [])],
    },
    "supervise": lambda: {"hang": [restarted_service()]},
    "escalate": lambda: {
        "reboot": [rounds() + goes_down(), well()],
        "refused": [[*rounds(), "89 refused", "98.5 alive"], well()],
    },
    "hang": lambda: {
        "signals": [
            *(loses(signal) for signal in ("STOP", "KILL", "TERM")),
            [*well(), "10 timeout 60", *feeds(10, 600)],
        ]
    },
    "developer": lambda: {"hour": [developers_hour()]},
    "real-time": lambda: {"hogs": [beside_hogs()]},
    "figures": lambda: {
        "board": [
            measured(),
            [f"9 {name} 200 30 4200 300" for name in ("log-call", "ping", "tick")],
        ]
    },
    "boot-loop": lambda: {"fault": [rounds(VISTOR, "40_corvane") for _ in range(3)]},
}


def told(name, boards):
    """What a scenario's judge gets, of boards whose lives end as they should."""
    found = {}
    for part, lives in boards.items():
        found[part] = []
        for number, (lines, end) in enumerate(zip(lives, ENDS[name][part]), 1):
            parsed = [parse(f"n {line}", "n") for line in (f"1 boot {number}", *lines)]
            assert None not in parsed
            found[part].append(Life(number, parsed, end))
    return found
