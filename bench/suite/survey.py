"""Reading a survey and counting its records by net."""

from collections import Counter

from suite import inputs
from suite.measure import interleaved, median_ratio, median_seconds
from suite.table import Row, at_most

GOAL_TIME = 1.0
GOAL_MEMORY = 130  # bytes a record, beside the text
COUNT = r'/^S!/ { count[$2]++ } END { for (net in count) print count[net], net }'
SURVEYED_RECORDS = 500_000


class DifferentCounts(Exception):
    pass


def make_survey(bench):
    """The survey of a real run, its records repeated."""
    records = min(SURVEYED_RECORDS, bench.sizes.survey_records)
    design = inputs.make_design(bench, "surveyed.mcm", records)
    views = bench.scratch / "surveyed-views"
    inputs.extract_views(bench, design, views)
    header, lines = inputs.split_view_file(views / "connnets.txt")
    bench.remove(design)
    bench.remove(views)
    survey = bench.scratch / "survey.txt"
    with survey.open("wb") as file:
        file.write(header)
        for _ in range(bench.sizes.survey_records // records):
            file.write(lines)
    return survey


def counts(output: str) -> Counter:
    result = Counter()
    for line in output.splitlines():
        count, _, net = line.partition(" ")
        result[net] += int(count)
    return result


def check_equal(own: str, other: str) -> int:
    """The number of records, once both have counted the same."""
    if counts(own) != counts(other):
        raise DifferentCounts("bench-survey and mawk count different records")
    return counts(own).total()


def measure(bench):
    survey = make_survey(bench)
    own, mawk = interleaved(
        2 * bench.sizes.repetitions - 1,
        lambda: bench.run(bench.program("bench-survey"), survey),
        lambda: bench.run(bench.installed("mawk"), "-F!", COUNT, survey),
    )
    records = check_equal(own[0].output, mawk[0].output)
    ratio = median_ratio(own, mawk)
    peak = max(sample.peak_memory for sample in own)
    text = survey.stat().st_size
    per_record = (peak - text) / records
    bench.remove(survey)
    return [
        Row(
            what=f"survey read and count, {records / 1e6:g} million records",
            against="mawk counting the same file",
            goal=f"no slower; at most {GOAL_MEMORY} bytes a record beside the text",
            measured=f"{ratio:.2f} times mawk's time; {per_record:.0f} bytes a record",
            used=max(at_most(ratio, GOAL_TIME), at_most(per_record, GOAL_MEMORY)),
            figures={
                "records": records,
                "text_bytes": text,
                "peak_memory_bytes": peak,
                "median_seconds": {"own": median_seconds(own), "mawk": median_seconds(mawk)},
                "seconds": {
                    "own": [sample.seconds for sample in own],
                    "mawk": [sample.seconds for sample in mawk],
                },
            },
        )
    ]
