"""What a log call costs."""

from wardex_bench.row import Row

ROWS: list[Row] = []
