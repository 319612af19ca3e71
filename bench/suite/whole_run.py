"""A default run with several limits, beside one process that extracts the same views."""

from suite import inputs, trace
from suite.measure import interleaved, median_seconds
from suite.schedule import covered
from suite.table import Row, at_most

LIMITS = (1, 2, 4, 8)
GOAL_OVERHEAD = 0.03
NANOSECONDS = 1e9


def single_run(bench, design):
    directory = bench.fresh_directory("single")
    control = directory / "control"
    views = bench.run(bench.program("bench-control-file"), control).output.split()
    outputs = [directory / view for view in views]
    standin = bench.program("extracta-standin")
    return bench.run(standin, "-k", "-c", "-m", design, control, *outputs)


def default_run(bench, design, limit):
    """The run, and the seconds of it in which none of its children ran."""
    directory = bench.fresh_directory("parallel")
    path = bench.scratch / "trace"
    bench.remove(path)
    environment = inputs.standin_environment(bench) | inputs.threads(bench, 2 * limit)
    environment["EXTRACTA_STANDIN_TRACE"] = str(path)
    sample = bench.run(bench.program("VelExtracta"), design, directory, environment=environment)
    return sample, sample.seconds - covered(trace.intervals(path)) / NANOSECONDS


def limit_row(limit, runs, single) -> Row:
    samples = [sample for sample, _ in runs]
    overhead = sorted(alone / sample.seconds for sample, alone in runs)[len(runs) // 2]
    share = median_seconds(samples) / median_seconds(single)
    return Row(
        what=f"default run, limit {limit}",
        against="one process for the same views",
        goal=f"reported; own overhead under {GOAL_OVERHEAD:.0%}",
        measured=f"{share:.2f} times its time; overhead {overhead:.2%}",
        used=at_most(overhead, GOAL_OVERHEAD),
        figures={
            "limit": limit,
            "ratio_to_single": share,
            "overhead_share": overhead,
            "median_seconds": {
                "default": median_seconds(samples),
                "single": median_seconds(single),
            },
            "seconds": {
                "default": [sample.seconds for sample in samples],
                "single": [sample.seconds for sample in single],
            },
            "seconds_without_child": [alone for _, alone in runs],
        },
    )


def measure(bench):
    design = inputs.make_design(bench, "whole.mcm", bench.sizes.whole_run_records)
    single, *parallel = interleaved(
        bench.sizes.repetitions,
        lambda: single_run(bench, design),
        *(lambda limit=limit: default_run(bench, design, limit) for limit in LIMITS),
    )
    bench.remove(bench.scratch / "single")
    bench.remove(bench.scratch / "parallel")
    bench.remove(design)
    return [limit_row(limit, runs, single) for limit, runs in zip(LIMITS, parallel)]
