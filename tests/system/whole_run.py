"""A supervisor's life, for runs in which a tool watches its every step.

On the way it does most of what it can: it becomes stable, loses a service that hangs, restarts it,
answers each method, takes a configuration, and sees its servers go and come.
"""

from camera import PICTOR, VISTOR, number, text

DEAD = f"Service {PICTOR} considered dead, restarting"


def live(camera):
    """From a stable device to a stable device."""
    camera.await_stable()
    call_every_method(camera)
    lose_a_service(camera)
    configure(camera)
    lose_the_servers(camera)


def call_every_method(camera):
    """Each method as it is meant, and for a service that there is not."""
    assert camera.call("doPing").code == 0
    assert camera.call("getServiceList").code == 0
    for method in ("getServiceStatus", "doStopService", "doStartService"):
        assert camera.call(method, text(PICTOR)).code == 0
        camera.call(method, text("com.orvo.nobody"))
    assert camera.call("setServicePingTimeoutOneShot", text(VISTOR), number(500)).code == 0


def lose_a_service(camera):
    """It hangs until it is taken for dead; what the script starts then is well."""
    before = camera.texts().count("SuprStableSystem::entry")
    camera.order("pictor", "hang")
    camera.await_text(DEAD)
    camera.order("pictor", "up")
    camera.await_text("SuprStableSystem::entry", times=before + 1)


def configure(camera):
    """A configuration that is taken, and one that cannot be."""
    with camera.connect_redis() as redis:
        redis.command("PUBLISH", "LOGGER:CFG", "{")
        redis.command("PUBLISH", "LOGGER:CFG", '{"source":"all","mask":255,"segvregex":"^no$"}')
    camera.await_true(
        lambda: any(said.startswith("Applying new log") for said in camera.texts()),
        "the configuration",
    )


def lose_the_servers(camera):
    """The log's server is started anew; supervision goes on without a log."""
    camera.redis("restart", ["redis-cache"])
    camera.await_feeds(3)
