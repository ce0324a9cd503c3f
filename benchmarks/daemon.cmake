# Programs of the rows in wardex_bench/rows/daemon.py.
pkg_check_modules(SdBus QUIET IMPORTED_TARGET libsystemd)

# The services and the hardware of the simulated device, in which the daemon is measured.
add_dependencies(benchmarks
    simulated-service simulated-quorl watchdog-guard device-observer record-reader)

# All the libraries that the supervisor may need as shared ones, whether it links them so or not.
wardex_add_benchmark(yardsticks bare-qt-bus-name LINKS Qt5::DBus)
target_link_options(bare-qt-bus-name PRIVATE
    "SHELL:-Wl,--push-state,--no-as-needed -lhiredis -levent -levent_pthreads -lcjson -ludev -Wl,--pop-state")
wardex_add_benchmark(yardsticks bare-qt-idle LINKS Qt5::DBus)
if(TARGET PkgConfig::SdBus)
    wardex_add_benchmark(yardsticks bare-sd-bus-name LINKS PkgConfig::SdBus)
    wardex_add_benchmark(drivers start-time LINKS PkgConfig::SdBus)
endif()

# The supervisor itself, without its own bounds on what threads take.
wardex_add_benchmark(yardsticks default-thread-memory LINKS supervision device_family)
target_sources(default-thread-memory PRIVATE
    ${PROJECT_SOURCE_DIR}/src/app/linux/wardex/src/main.cpp)
target_compile_definitions(default-thread-memory PRIVATE WARDEX_VERSION="${PROJECT_VERSION}")
target_link_options(default-thread-memory PRIVATE $<TARGET_PROPERTY:wardex,LINK_OPTIONS>)
