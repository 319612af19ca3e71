"""From the start of the program to the start of its first child."""

import statistics

from suite import inputs, trace
from suite.measure import interleaved
from suite.table import Row, at_most

GOAL_MILLISECONDS = 10


def first_child_milliseconds(bench, *command) -> float:
    """By a launcher that notes when it starts the command, until the first child says it runs."""
    path = bench.scratch / "trace"
    bench.remove(path)
    sample = bench.run(
        *command,
        environment=inputs.standin_environment(bench) | {"EXTRACTA_STANDIN_TRACE": str(path)},
    )
    first = min(begin for begin, _ in trace.intervals(path))
    return (first - sample.began) / 1e6


def measure(bench):
    design = inputs.make_design(bench, "empty.mcm", records=0, nets=0)
    control = bench.scratch / "views.control"
    views = bench.run(bench.program("bench-control-file"), control).output.split()
    target = bench.fresh_directory("startup")
    standin = [bench.program("extracta-standin"), "-k", "-c", "-m", design, control]
    standin += [target / view for view in views]
    spawn_only = [bench.program("bench-spawn"), bench.scratch / "inner-report", 1, *standin]
    whole = [bench.program("VelExtracta"), design, target]
    own, least = interleaved(
        bench.sizes.startups,
        lambda: first_child_milliseconds(bench, *whole),
        lambda: first_child_milliseconds(bench, *spawn_only),
    )
    more = statistics.median(own) - statistics.median(least)
    bench.remove(target)
    bench.remove(design)
    return [
        Row(
            what="start-up to the first child",
            against="a program that only calls posix_spawn",
            goal=f"under {GOAL_MILLISECONDS} ms more",
            measured=f"{more:.1f} ms more ({statistics.median(own):.1f} ms, "
            f"{statistics.median(least):.1f} ms)",
            used=at_most(more, GOAL_MILLISECONDS),
            figures={"own_milliseconds": own, "spawn_only_milliseconds": least},
        )
    ]
