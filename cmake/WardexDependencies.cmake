# What the device's image provides; nothing here is built by us.
find_package(Qt5 5.15 REQUIRED COMPONENTS Core DBus)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(Hiredis REQUIRED IMPORTED_TARGET hiredis)
pkg_check_modules(Libevent REQUIRED IMPORTED_TARGET libevent libevent_pthreads)
pkg_check_modules(Libudev REQUIRED IMPORTED_TARGET libudev)
pkg_check_modules(CJson REQUIRED IMPORTED_TARGET libcjson)
