"""A connectivity view of several gigabytes: merged from its pieces, then packed."""

from suite import inputs
from suite.measure import interleaved, median_ratio, median_seconds
from suite.table import Row, at_most

PIECES = 13  # three of each of the four largest nets, and the remainder
GOAL_MERGE = 1.25
GOAL_GROWTH = 1 << 20  # bytes: memory that does not depend on the size
GOAL_MEMORY = 512 << 20
SMALL_PIECE = 64 << 10


def make_pieces(bench, directory_name: str, total: int, header: bytes, records: bytes):
    directory = bench.fresh_directory(directory_name)
    pieces = [directory / f"conn{number}.txt" for number in range(PIECES)]
    for piece in pieces:
        inputs.write_view_file(piece, header, records, total // PIECES)
    return pieces


def connectivity_view(bench) -> tuple[bytes, bytes]:
    design = inputs.make_design(bench, "merged.mcm", bench.sizes.packing_records)
    views = bench.scratch / "merged-views"
    inputs.extract_views(bench, design, views)
    parts = inputs.split_view_file(views / "conn.txt")
    bench.remove(views)
    bench.remove(design)
    return parts


def merge(bench, combined, pieces):
    bench.remove(combined)
    return bench.run(bench.program("bench-merge"), combined, *pieces)


def concatenate(bench, combined, pieces):
    bench.remove(combined)
    script = 'target=$1; shift; exec cat "$@" > "$target"'
    return bench.run("/bin/sh", "-c", script, "sh", combined, *pieces)


def merge_row(bench, combined, pieces, small_pieces) -> Row:
    concatenated = bench.scratch / "concatenated.txt"
    own, cat = interleaved(
        bench.sizes.repetitions,
        lambda: merge(bench, combined, pieces),
        lambda: concatenate(bench, concatenated, pieces),
    )
    bench.remove(concatenated)
    small_merge = bench.scratch / "small.txt"
    small = merge(bench, small_merge, small_pieces)
    bench.remove(small_merge)
    peak = max(sample.peak_memory for sample in own)
    growth = max(peak - small.peak_memory, 0)
    ratio = median_ratio(own, cat)
    total = inputs.total_size(pieces)
    return Row(
        what=f"merge of {total / (1 << 30):.2f} GiB in {PIECES} pieces",
        against="cat of the same pieces",
        goal=f"at most {GOAL_MERGE} times its time, memory constant",
        measured=f"{ratio:.2f} times; {peak / (1 << 20):.1f} MiB, "
        f"{growth / (1 << 20):.1f} MiB more than for small pieces",
        used=max(at_most(ratio, GOAL_MERGE), at_most(growth, GOAL_GROWTH)),
        figures={
            "bytes": total,
            "median_seconds": {"own": median_seconds(own), "cat": median_seconds(cat)},
            "seconds": {
                "own": [sample.seconds for sample in own],
                "cat": [sample.seconds for sample in cat],
            },
            "peak_memory_bytes": peak,
            "peak_memory_bytes_small_pieces": small.peak_memory,
        },
    )


def memory_row(bench, file) -> Row:
    archive = bench.scratch / "large.vlx"
    sample = bench.run(bench.program("bench-pack"), archive, file)
    size = file.stat().st_size
    inputs.check_archive(archive)
    bench.remove(archive)
    return Row(
        what="packing, memory",
        against=f"one file of {size / (1 << 30):.2f} GiB",
        goal=f"under {GOAL_MEMORY >> 20} MiB at the peak",
        measured=f"{sample.peak_memory / (1 << 20):.0f} MiB",
        used=at_most(sample.peak_memory, GOAL_MEMORY),
        figures={
            "bytes": size,
            "peak_memory_bytes": sample.peak_memory,
            "seconds": sample.seconds,
        },
    )


def measure(bench):
    header, records = connectivity_view(bench)
    total = bench.sizes.large_file_bytes
    pieces = make_pieces(bench, "pieces", total, header, records)
    small_pieces = make_pieces(bench, "small-pieces", PIECES * SMALL_PIECE, header, records)
    combined = bench.scratch / "combined.txt"
    rows = [merge_row(bench, combined, pieces, small_pieces)]
    bench.remove(bench.scratch / "pieces")
    rows.append(memory_row(bench, combined))
    bench.remove(combined)
    return rows
