"""The supervisor's texts that the stories' verdicts look for, exact to the byte."""

from __future__ import annotations

STARTS = "wardex: supervision activity starting, Bello the watchdog, is unfused ..."
STARTS_AS_DEVELOPER = "wardex starting in developer mode"
FAMILY = {
    family: f"Registerinng services for the {family} family of devices"
    for family in ("ZK4XX", "ZM7xx", "ZQ9XX")
}
NO_FAMILY = "Unable to detect the device family"
GIVES_UP = "wardex: Unable to register Services. Giving up!"

THRESHOLD = "Ping threshold exceeded. Going down"
RUN_LEVEL_DOWN = "System run level is down. Going down."
RUN_LEVEL_STARTING = "System run level STARTING. Going starting"

RESTARTS_PACKAGE = "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware"
WOULD_RESTART_PACKAGE = "SUPERVISOR would restart mf-optware, but saved via developer mode"
TOO_MANY_RESTARTS = "Too many restarts(3) detected in last 5 minutes: rebooting whole system ..."
RESTARTS_SYSTEM_SYSLOG = "SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ..."
RESTARTS_SYSTEM = f"wardex: {RESTARTS_SYSTEM_SYSLOG}"
WOULD_RESTART_SYSTEM_SYSLOG = (
    "SUPERVISOR WOULD RESTART SYSTEM via /dev/watchdog ... but saved via developer mode"
)
WOULD_RESTART_SYSTEM = f"wardex: {WOULD_RESTART_SYSTEM_SYSLOG}"


def ping_failed(service: str) -> str:
    """A strike, in SuprUp."""
    return f"Ping {service} failed"


def not_registered(service: str) -> str:
    """A strike of a service that has left the bus."""
    return f"Service {service} not registered anymore?! Going down."


def considered_dead(service: str) -> str:
    """The service is about to be restarted."""
    return f"Service {service} considered dead, restarting"


def considered_dead_as_developer(service: str) -> str:
    """The service would be restarted."""
    return f"Service {service} considered dead, restarting .... (disabled)"


def suspicious(service: str) -> str:
    """A service that was never reported down has come up again."""
    return (
        "SuprStableSystem::serviceIsUp: g_upServices == g_knownServices is suspicious "
        f"when adding {service}"
    )


def unknown_service(service: str) -> str:
    """A judged service that this family does not have."""
    return f"isAlive: Unknown service {service}"


def ping_interval(service: str, milliseconds: int) -> str:
    """A state asks how often to ping."""
    return f"Ping interval of service {service} is {milliseconds}"
