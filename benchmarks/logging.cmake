# Programs of the rows in wardex_bench/rows/logging.py.
wardex_add_benchmark(drivers log-masked LINKS logger)
wardex_add_benchmark(drivers log-writes LINKS logger)
wardex_add_benchmark(yardsticks bare-mutex LINKS Threads::Threads)
wardex_add_benchmark(yardsticks bare-redis-writes LINKS PkgConfig::Hiredis)
wardex_add_benchmark(yardsticks syslog-writes)
