# Programs of the rows in wardex_bench/rows/supervision.py.
wardex_add_benchmark(drivers is-alive LINKS supervised_services dbus_types)
wardex_add_benchmark(drivers quiet-tick LINKS supervision supervised_services dbus_types)
wardex_add_benchmark(drivers record-crc LINKS eeprom)
wardex_add_benchmark(drivers quorl-query LINKS quorl)
wardex_add_benchmark(yardsticks qt-ping LINKS dbus_proxies)
wardex_add_benchmark(yardsticks socket-query LINKS quorl)
add_dependencies(benchmarks simulated-service simulated-quorl)
