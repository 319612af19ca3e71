"""What is done to the text of views: pieces are merged, a survey is read and counted."""

from report import Row
from workbench import GIB, MIB, median_seconds, peak_memory, remove, total_size

PIECES = 13  # three of each of the four largest nets, and the remainder
SMALL_PIECE = 64 << 10
GOAL_MERGE = 1.25
GOAL_GROWTH = MIB  # memory that does not depend on the size

SURVEYED_RECORDS = 500_000
GOAL_RECORD = 130  # bytes a record, beside the text
COUNT = "/^S!/ { count[$2]++ } END { for (net in count) print count[net], net }"


def make_pieces(bench, size: int):
    directory = bench.fresh_directory("pieces")
    return [bench.write_text(directory / f"conn{n}.txt", size) for n in range(PIECES)]


def merge(bench, combined, pieces):
    remove(combined)
    sample = bench.run(bench.driver, "merge", combined, *pieces)
    with pieces[0].open("rb") as first:
        headers = len(first.readline() + first.readline()) * (PIECES - 1)
    if total_size(combined) != total_size(*pieces) - headers:
        raise RuntimeError(f"{combined} does not hold what is in the pieces")
    return sample


def concatenate(bench, combined, pieces):
    remove(combined)
    return bench.run("/bin/sh", "-c", 'exec cat "$@" > "$0"', combined, *pieces)


def measure_merge(bench):
    pieces = make_pieces(bench, bench.sizes.large_bytes // PIECES)
    total = total_size(*pieces)
    combined = bench.scratch / "combined.txt"
    ways = {
        "own": lambda: merge(bench, combined, pieces),
        "cat": lambda: concatenate(bench, combined, pieces),
    }
    runs = bench.compare(bench.sizes.repetitions, ways, fills_memory=True)
    small = merge(bench, combined, make_pieces(bench, SMALL_PIECE))
    remove(combined, bench.scratch / "pieces")
    ratio = median_seconds(runs["own"]) / median_seconds(runs["cat"])
    peak = peak_memory(runs["own"])
    growth = max(peak - peak_memory([small]), 0)
    yield Row(
        f"merge of {total / GIB:.2f} GiB in {PIECES} pieces",
        "cat of the same pieces",
        f"at most {GOAL_MERGE} times its time, memory constant",
        f"{ratio:.2f} times; {peak / MIB:.1f} MiB, {growth / MIB:.1f} more than for small pieces",
        [ratio / GOAL_MERGE, growth / GOAL_GROWTH],
    )


def make_survey(bench):
    """The survey of a real run, its records repeated."""
    records = min(SURVEYED_RECORDS, bench.sizes.survey_records)
    bench.extract_views("surveyed", records)
    text = (bench.scratch / "surveyed/connnets.txt").read_bytes()
    header_size = text.index(b"S!")
    survey = bench.scratch / "survey.txt"
    with survey.open("wb") as file:
        file.write(text[:header_size])
        for _ in range(bench.sizes.survey_records // records):
            file.write(text[header_size:])
    return survey


def measure_survey(bench):
    survey = make_survey(bench)
    mawk = ("/usr/bin/mawk", "-F!", COUNT, survey)
    ways = {"own": (bench.driver, "rank", survey), "mawk": mawk}
    runs = bench.compare(bench.sizes.repetitions, ways)
    counts = runs["own"][0].lines[:-1]
    if sorted(counts) != sorted(runs["mawk"][0].lines):
        raise RuntimeError("the product and mawk count different records")
    records = sum(int(line.split()[0]) for line in counts)
    ratio = median_seconds(runs["own"]) / median_seconds(runs["mawk"])
    per_record = (peak_memory(runs["own"]) - total_size(survey)) / records
    remove(survey, bench.scratch / "surveyed")
    yield Row(
        f"survey read and count, {records / 1e6:g} million records",
        "mawk counting the same file",
        f"no slower; at most {GOAL_RECORD} bytes a record beside the text",
        f"{ratio:.2f} times mawk's time; {per_record:.0f} bytes a record",
        [ratio, per_record / GOAL_RECORD],
    )
