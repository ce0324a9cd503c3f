# What the device's image provides; nothing here is built by us.
find_package(Qt5 5.15 REQUIRED COMPONENTS Core DBus)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(Hiredis REQUIRED IMPORTED_TARGET hiredis)
pkg_check_modules(Libevent REQUIRED IMPORTED_TARGET libevent_core libevent_pthreads)
pkg_check_modules(Libudev REQUIRED IMPORTED_TARGET libudev)
find_package(CLI11 2.1 REQUIRED)
pkg_check_modules(Ncurses REQUIRED IMPORTED_TARGET ncursesw)
pkg_check_modules(CJson REQUIRED IMPORTED_TARGET libcjson)

# The device's programs come as one image, so that what only they use may be part of them: with the
# loader's share gone the supervisor starts with fewer instructions than a bare Qt program. OFF for
# a system that updates the two libraries by themselves.
option(WARDEX_STATIC_REDIS_CLIENT "Link hiredis and libevent statically where their archives are" ON)

# wardex_prefer_archives(TARGET NAME ...): lets an imported target bring archives instead of shared
# libraries; nothing when one is missing.
function(wardex_prefer_archives target)
    set(archives)
    foreach(name IN LISTS ARGN)
        find_library(${name}_ARCHIVE lib${name}.a)
        if(NOT ${name}_ARCHIVE)
            return()
        endif()
        list(APPEND archives ${${name}_ARCHIVE})
    endforeach()
    set_property(TARGET ${target} PROPERTY INTERFACE_LINK_LIBRARIES ${archives} Threads::Threads)
endfunction()

if(WARDEX_STATIC_REDIS_CLIENT)
    wardex_prefer_archives(PkgConfig::Hiredis hiredis)
    wardex_prefer_archives(PkgConfig::Libevent event_pthreads event_core)
endif()
