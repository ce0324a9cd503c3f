SUMMARY = "Service supervisor of the camera device"
DESCRIPTION = "Pings the device's services, restarts what is dead, reboots what cannot be saved, \
and feeds the hardware watchdog."
SECTION = "base"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=2b17a57920d847f9cbab489b1cab8bbc"

# Where the integrator keeps the sources, in local.conf: a git URL of bitbake's kind.
WARDEX_SOURCE ??= "git:///srv/git/wardex.git;protocol=file;branch=main"
SRC_URI = "${WARDEX_SOURCE}"
SRCREV ??= "${AUTOREV}"
S = "${WORKDIR}/git"

DEPENDS = "qtbase qtbase-native hiredis libevent udev cjson cli11 ncurses"

inherit cmake_qt5 pkgconfig useradd update-rc.d systemd

EXTRA_OECMAKE = "-DWARDEX_BUILD_TESTS=OFF -DWARDEX_BUILD_SIMULATOR=OFF -DWARDEX_WERROR=OFF"

do_install:append() {
    install -D -m 0755 ${S}/packaging/init.d/wardex ${D}${sysconfdir}/init.d/wardex
    install -D -m 0644 ${S}/packaging/default/wardex ${D}${sysconfdir}/default/wardex
    install -D -m 0644 ${S}/packaging/systemd/wardex.service ${D}${systemd_system_unitdir}/wardex.service
    install -D -m 0644 ${S}/packaging/lnav/wardex_log.json ${D}${sysconfdir}/lnav/formats/wardex/wardex_log.json
}

PACKAGES =+ "${PN}-tools"
FILES:${PN} += "${sbindir}/wardex ${datadir}/dbus-1/system.d/com.orvo.wardex.conf \
    ${sysconfdir}/init.d/wardex ${sysconfdir}/default/wardex ${systemd_system_unitdir}/wardex.service"
FILES:${PN}-tools = "${bindir}/wardexctl ${sysconfdir}/lnav/formats/wardex/wardex_log.json"
CONFFILES:${PN} = "${sysconfdir}/default/wardex ${sysconfdir}/init.d/wardex"

# ps is what the daemon runs; the init script needs the whole start-stop-daemon, not busybox'.
RDEPENDS:${PN} = "dbus procps redis dpkg-start-stop"

# Who may start and stop services over the bus.
USERADD_PACKAGES = "${PN}"
GROUPADD_PARAM:${PN} = "--system wardex"

INITSCRIPT_NAME = "wardex"
INITSCRIPT_PARAMS = "defaults 90 10"
SYSTEMD_SERVICE:${PN} = "wardex.service"
