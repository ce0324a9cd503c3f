"""What a ping, a quiet tick, a record's check and a query cost."""

from wardex_bench.row import Row

ROWS: list[Row] = []
