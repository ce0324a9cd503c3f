# Programs of the rows in wardex_bench/rows/daemon.py.
