"""The pool of children: how well it keeps its places filled, and what waiting costs."""

import random
import statistics

from suite.measure import interleaved, median_ratio, median_seconds
from suite.schedule import list_schedule
from suite.table import Row, at_most

GOAL_BOUND = 1.02
GOAL_XARGS = 1.0
GOAL_IDLE = 0.02
IDLE_CHILDREN = 32
STARTS = 200


def child_lengths(count: int, average: int) -> list[int]:
    """Milliseconds, from a fifth to nine fifths of the average; the same in every run."""
    chosen = random.Random(1)
    return [chosen.randint(average // 5, average * 9 // 5) for _ in range(count)]


def names(lengths) -> list[str]:
    return [f"{number}_{length}" for number, length in enumerate(lengths)]


def pool_run(bench, directory, limit, lengths):
    return bench.run(
        bench.program("bench-pool"),
        limit,
        directory,
        *names(lengths),
        environment={"VELTAR_EXTRACTA_PATHOVERRIDE": str(bench.program("bench-child"))},
    )


def child_arguments(directory, name) -> list[str]:
    """What the pool's generator puts on the command line of the child."""
    control = directory / f"extracta_control_net{name}.txt"
    return ["-k", "-m", str(directory / "design"), str(control), str(directory / f"net{name}.txt")]


def xargs_run(bench, directory, limit, lengths):
    words = directory / "words"
    lines = [" ".join(child_arguments(directory, name)) for name in names(lengths)]
    words.write_text("\n".join(lines) + "\n")
    per_command = len(child_arguments(directory, ""))
    return bench.run(
        bench.installed("xargs"),
        *("-a", words, "-P", limit, "-n", per_command, bench.program("bench-child")),
    )


def start_costs(bench, directory) -> tuple[float, float]:
    """Seconds to start a child, and those that a child without anything to do then takes."""
    child = [bench.program("bench-child"), *child_arguments(directory, "0_0")]
    samples = [bench.run(*child, count=STARTS) for _ in range(3)]
    start = statistics.median(sample.starting_seconds for sample in samples) / STARTS
    return start, median_seconds(samples) / STARTS - start


def scheduling_row(bench, directory, limit, lengths) -> Row:
    own, xargs = interleaved(
        bench.sizes.repetitions,
        lambda: pool_run(bench, directory, limit, lengths),
        lambda: xargs_run(bench, directory, limit, lengths),
    )
    start, rest = start_costs(bench, directory)
    seconds = [length / 1000 for length in lengths]
    bound = list_schedule([length + rest for length in seconds], limit, start)
    places = max(len(lengths) / limit, 1)
    over = median_seconds(own) / bound
    ratio = median_ratio(own, xargs)
    return Row(
        what=f"scheduling {len(lengths)} children, limit {limit}",
        against="list-scheduling bound and starts; xargs -P",
        goal=f"at most {GOAL_BOUND} times the bound, no slower than xargs",
        measured=f"{over:.3f} times the bound, {ratio:.3f} times xargs",
        used=max(at_most(over, GOAL_BOUND), at_most(ratio, GOAL_XARGS)),
        figures={
            "children": len(lengths),
            "limit": limit,
            "start_seconds": start,
            "seconds_of_a_child_without_work": rest,
            "bound_seconds": bound,
            "bound_seconds_without_starts": list_schedule(seconds, limit),
            "median_seconds": {"own": median_seconds(own), "xargs": median_seconds(xargs)},
            "seconds": {
                "own": [sample.seconds for sample in own],
                "xargs": [sample.seconds for sample in xargs],
            },
            "milliseconds_over_bound_a_place": 1000 * (median_seconds(own) - bound) / places,
        },
    )


def idle_row(bench, directory) -> Row:
    lengths = [bench.sizes.idle_milliseconds] * IDLE_CHILDREN
    samples = [
        pool_run(bench, directory, IDLE_CHILDREN, lengths) for _ in range(bench.sizes.repetitions)
    ]
    waits = [tuple(map(float, sample.output.split())) for sample in samples]
    shares = [processor / wall for wall, processor in waits]
    share = statistics.median(shares)
    return Row(
        what=f"idle cost of waiting for {IDLE_CHILDREN} running children",
        against="processor time of the parent over wall time",
        goal=f"under {GOAL_IDLE:.0%}",
        measured=f"{share:.2%}",
        used=at_most(share, GOAL_IDLE),
        figures={
            "shares": shares,
            "wall_seconds": [wall for wall, _ in waits],
        },
    )


def measure(bench):
    directory = bench.fresh_directory("pool")
    rows = [
        scheduling_row(bench, directory, limit, child_lengths(bench.sizes.children, average))
        for limit, average in bench.sizes.child_milliseconds.items()
    ]
    rows.append(idle_row(bench, directory))
    bench.remove(directory)
    return rows
