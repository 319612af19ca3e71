"""How much is measured: in full, or quickly to see that everything works."""

import dataclasses

MIB = 1 << 20
GIB = 1 << 30


@dataclasses.dataclass(frozen=True)
class Sizes:
    packing_bytes: int
    packing_records: int  # connectivity records of each design whose views are packed
    large_file_bytes: int  # packed as one file, and merged from pieces
    survey_records: int
    children: int
    child_milliseconds: dict[int, int]  # on average, by the limit of processes
    idle_milliseconds: int
    startups: int
    whole_run_records: int
    repetitions: int  # of what takes long
    disk_bytes: int  # at the peak, with some room


FULL = Sizes(
    packing_bytes=1000 * 1000 * 1000,
    packing_records=300_000,
    large_file_bytes=4 * GIB,
    survey_records=10_000_000,
    children=200,
    # A real child runs for seconds; with few at once that would take too long here.
    child_milliseconds={1: 100, 8: 400, 32: 1000},
    idle_milliseconds=10_000,
    startups=30,
    whole_run_records=1_000_000,
    repetitions=3,
    disk_bytes=15 * GIB,
)

QUICK = Sizes(
    packing_bytes=40 * 1000 * 1000,
    packing_records=30_000,
    large_file_bytes=256 * MIB,
    survey_records=1_000_000,
    children=60,
    child_milliseconds={1: 100, 8: 400, 32: 1000},
    idle_milliseconds=2_000,
    startups=10,
    whole_run_records=30_000,
    repetitions=3,
    disk_bytes=2 * GIB,
)
