# The device's processor: 32-bit ARM with Debian 12's libraries, which packaging/prepare-armhf puts
# below a cache folder. What is built runs here, too, under the emulator of a single program.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(cache $ENV{XDG_CACHE_HOME})
if(NOT cache)
    set(cache $ENV{HOME}/.cache)
endif()
set(CMAKE_SYSROOT ${cache}/wardex/armhf/sysroot)
if(NOT EXISTS ${CMAKE_SYSROOT})
    message(FATAL_ERROR "${CMAKE_SYSROOT} is missing: packaging/prepare-armhf makes it")
endif()

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# The compiler's own way to the libraries that a library needs leads through this machine's.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})

set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/qemu-arm-static -L ${CMAKE_SYSROOT}/emulated)
