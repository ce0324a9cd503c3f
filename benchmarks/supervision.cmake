# Programs of the rows in wardex_bench/rows/supervision.py.
