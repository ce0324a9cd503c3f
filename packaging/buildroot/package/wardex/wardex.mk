################################################################################
#
# wardex
#
################################################################################

WARDEX_VERSION = 0.4.1539
# The package lies in the tree that it builds.
WARDEX_SITE = $(BR2_EXTERNAL_WARDEX_PATH)/../..
WARDEX_SITE_METHOD = local
# What is made in the tree (.gitignore) stays there.
WARDEX_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = \
	--exclude /build/ \
	--exclude /.run/ \
	--exclude __pycache__/ \
	--exclude '*.pyc' \
	--exclude .mypy_cache/ \
	--exclude .pytest_cache/
WARDEX_LICENSE = MIT
WARDEX_LICENSE_FILES = LICENSE
WARDEX_DEPENDENCIES = host-pkgconf qt5base hiredis libevent udev cjson cli11 ncurses
WARDEX_CONF_OPTS = \
	-DWARDEX_BUILD_TESTS=OFF \
	-DWARDEX_BUILD_SIMULATOR=OFF \
	-DWARDEX_WERROR=OFF

define WARDEX_INSTALL_SETTINGS
	$(INSTALL) -D -m 0644 $(@D)/packaging/default/wardex \
		$(TARGET_DIR)/etc/default/wardex
	$(INSTALL) -D -m 0644 $(@D)/packaging/lnav/wardex_log.json \
		$(TARGET_DIR)/etc/lnav/formats/wardex/wardex_log.json
endef
WARDEX_POST_INSTALL_TARGET_HOOKS += WARDEX_INSTALL_SETTINGS

# Buildroot's busybox has a smaller start-stop-daemon than Debian's init script needs.
define WARDEX_INSTALL_INIT_SYSV
	$(INSTALL) -D -m 0755 $(WARDEX_PKGDIR)/S90wardex \
		$(TARGET_DIR)/etc/init.d/S90wardex
endef

define WARDEX_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(@D)/packaging/systemd/wardex.service \
		$(TARGET_DIR)/usr/lib/systemd/system/wardex.service
endef

# Who may start and stop services over the bus.
define WARDEX_USERS
	- - wardex -1 - - - - Supervisor of the camera
endef

$(eval $(cmake-package))
