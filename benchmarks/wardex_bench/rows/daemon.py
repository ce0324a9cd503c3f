"""What the whole daemon costs: memory, start, idling."""

from wardex_bench.row import Row

ROWS: list[Row] = []
