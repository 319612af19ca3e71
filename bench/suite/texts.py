"""Work on the text of views: merging pieces, reading and counting a survey."""

import re

from rows import Row
from workbench import GIB, MIB, median_seconds, peak_memory, remove, total_size

PIECES = 13  # three of each of the four largest nets, and the remainder
SMALL_PIECE = 64 << 10
MERGES = 3  # times as often as what takes longer: the system's copying is as fast as it likes
GOAL_MERGE = 1.25
GOAL_GROWTH = MIB  # memory that does not depend on the size

SURVEY_REPEATS = 50  # ten times fewer in the smaller one
SURVEYED_NETS = (200, 100_000)
GOAL_SURVEY, GOAL_SURVEY_MEMORY = 0.6, 32 * MIB
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
    runs = bench.compare(MERGES * bench.sizes.repetitions, ways)
    small = merge(bench, combined, make_pieces(bench, SMALL_PIECE))
    own, others = (median_seconds(samples) for samples in runs.values())
    spread = [sample.seconds for sample in runs["cat"]]
    ratio = own / others
    peak = peak_memory(runs["own"])
    growth = max(peak - peak_memory([small]), 0)
    yield Row(
        f"merge of {total / GIB:.2f} GiB in {PIECES} pieces",
        "cat of the same pieces",
        f"at most {GOAL_MERGE} times its time, memory constant",
        f"{ratio:.2f} times, by the medians ({own:.2f} s, {others:.2f} s; cat from "
        f"{min(spread):.2f} to {max(spread):.2f} s); {peak / MIB:.1f} MiB, {growth / MIB:.1f} more "
        "than for small pieces",
        [ratio / GOAL_MERGE, growth / GOAL_GROWTH],
    )


def make_survey(bench, nets: int, records: int) -> bytes:
    """The survey of a real run, followed by a record of each net, as some nets have none there."""
    bench.extract_views("surveyed", records - nets, nets=nets)
    survey, names = (
        (bench.scratch / "surveyed" / file).read_bytes() for file in ("connnets.txt", "net.txt")
    )
    remove(bench.scratch / "surveyed")
    return survey + b"".join(b"S!%b!\r\n" % name for name in re.findall(rb"(?m)^S!([^!]*)", names))


def count_survey(bench, survey, rounds: int) -> tuple[float, float]:
    """The share of mawk's time, and the peak memory."""
    mawk = ("/usr/bin/mawk", "-F!", COUNT, survey)
    ways = {"own": (bench.driver, "rank", survey), "mawk": mawk}
    runs = bench.compare(rounds, ways)
    if sorted(runs["own"][0].lines[:-1]) != sorted(runs["mawk"][0].lines):
        raise RuntimeError("the product and mawk count different records")
    return median_seconds(runs["own"]) / median_seconds(runs["mawk"]), peak_memory(runs["own"])


def measure_survey(bench):
    repeated_records = bench.sizes.survey_records // SURVEY_REPEATS
    texts = {nets: make_survey(bench, nets, repeated_records) for nets in SURVEYED_NETS}
    survey = bench.scratch / "survey.txt"
    for repeats in (SURVEY_REPEATS // 10, SURVEY_REPEATS):
        counted = {}
        for nets, text in texts.items():
            header_size = text.index(b"S!")
            records = repeats * text.count(b"\r\nS!")
            with survey.open("wb") as file:
                file.write(text[:header_size])
                for _ in range(repeats):
                    file.write(text[header_size:])
            # The smaller survey takes a tenth of the time and is measured ten times as often.
            rounds = bench.sizes.repetitions * SURVEY_REPEATS // repeats
            counted[nets] = count_survey(bench, survey, rounds)
        remove(survey)
        ratios, peaks = zip(*counted.values())
        yield Row(
            f"survey of {records / 1e6:g} million records, read and counted",
            "mawk counting the same file",
            f"at most {GOAL_SURVEY} times its time; under {GOAL_SURVEY_MEMORY // MIB} MiB",
            "; ".join(
                f"{nets:,} nets: {ratio:.2f} times, {peak / MIB:.1f} MiB"
                for nets, (ratio, peak) in counted.items()
            ),
            [max(ratios) / GOAL_SURVEY, max(peaks) / GOAL_SURVEY_MEMORY],
        )
