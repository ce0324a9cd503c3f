"""The rows of the table, in its order."""

from wardex_bench.row import Row
from wardex_bench.rows import daemon, desk, logging, supervision

ALL: list[Row] = [*logging.ROWS, *supervision.ROWS, *daemon.ROWS, *desk.ROWS]
