"""Children: how well the pool uses its places, the cost of waiting and starting, and the gain of
running many at once."""

import contextlib
import os
import pty
import random
import shutil
import statistics
import threading
import time

from rows import Row
from schedule import covered, list_schedule, traced_intervals
from workbench import median_seconds, remove

GOAL_BOUND = 1.01
# Average milliseconds of a child by the limit of processes. A real child runs for seconds; with
# few at once that would take too long here.
CHILD_MILLISECONDS = {1: 100, 8: 300, 32: 1000}
STARTS, START_MILLISECONDS = 100, 100  # children that are started one after the other, for the bound
SILENT_CHILDREN = 32
GOAL_WAITING, GOAL_WAITING_SHOWN = 0.05, 0.3  # percent of a core, without and with a terminal
GOAL_START = 10  # milliseconds
LIMITS = (1, 2, 4, 8)
GOAL_OVERHEAD = 0.03


def run_pool(bench, limit: int, names, **how):
    directory = bench.fresh_directory("pool")
    # A copy, because the product refuses to start itself, and the driver would do that.
    child = shutil.copy(bench.driver, directory / "extracta")
    command = (bench.driver, "pool", limit, directory, *names)
    return bench.run(*command, VELTAR_EXTRACTA_PATHOVERRIDE=str(child), **how)


def start_costs(bench) -> tuple[float, float]:
    """Seconds to start a child, and seconds that it takes besides its sleep. It sleeps here, too,
    because an idle processor is slow for a while afterwards, which is no cost of scheduling."""
    starting = 0.0
    begin = time.monotonic()
    for _ in range(STARTS):
        before = time.monotonic()
        words = [bench.driver, "child", f"0_{START_MILLISECONDS}"]
        child = os.posix_spawn(bench.driver, words, os.environ)
        starting += time.monotonic() - before
        os.waitpid(child, 0)
    whole = time.monotonic() - begin
    return starting / STARTS, (whole - starting) / STARTS - START_MILLISECONDS / 1000


def scheduling_row(bench, limit: int, milliseconds: list[int]) -> Row:
    names = [f"{number}_{length}" for number, length in enumerate(milliseconds)]
    words = bench.scratch / "words"
    words.write_text("\n".join(names))
    xargs = ("/usr/bin/xargs", "-a", words, "-P", limit, "-n", 1, bench.driver, "child")
    ways = {"own": lambda: run_pool(bench, limit, names), "xargs": xargs}
    own, others = map(median_seconds, bench.compare(bench.sizes.repetitions, ways).values())
    start, rest = start_costs(bench)
    bound = list_schedule([length / 1000 + rest for length in milliseconds], limit, start)
    return Row(
        f"scheduling {len(names)} children, limit {limit}",
        "list-scheduling bound and starts; xargs -P",
        f"at most {GOAL_BOUND} times the bound; xargs reported",
        f"{own / bound:.3f} times the bound, {own / others:.3f} times xargs",
        [own / bound / GOAL_BOUND],
    )


def measure_scheduling(bench):
    for limit, average in CHILD_MILLISECONDS.items():
        chosen = random.Random(1)  # the same in every run
        shortest, longest = average // 5, average * 9 // 5
        lengths = [chosen.randint(shortest, longest) for _ in range(bench.sizes.children)]
        yield scheduling_row(bench, limit, lengths)


def read_all(descriptor: int) -> None:
    with contextlib.suppress(OSError):  # the terminal reports so that nobody has it open
        while os.read(descriptor, 1 << 16):
            pass
    os.close(descriptor)


def run_on_terminal(bench, *arguments):
    """The same, with a terminal that takes all that it gets."""
    screen, terminal = pty.openpty()
    reader = threading.Thread(target=read_all, args=(screen,))
    reader.start()
    try:
        return run_pool(bench, *arguments, errors=terminal, TERM="xterm")
    finally:
        os.close(terminal)
        reader.join()


def measure_waiting(bench):
    milliseconds = bench.sizes.silent_milliseconds
    names = [f"{number}_{milliseconds}" for number in range(SILENT_CHILDREN)]
    ways = {
        way.__name__: lambda way=way: way(bench, SILENT_CHILDREN, names)
        for way in (run_pool, run_on_terminal)
    }
    shares, wakes = [], []
    for samples in bench.compare(bench.sizes.repetitions, ways).values():
        told = [sample.told for sample in samples]
        shares.append(statistics.median(100 * (t.user + t.system) / t.seconds for t in told))
        wakes.append(statistics.median(t.waits / t.seconds for t in told))
    yield Row(
        f"waiting {milliseconds / 1000:g} s for {SILENT_CHILDREN} silent children, without and with "
        "a terminal",
        "a core",
        f"at most {GOAL_WAITING} % and {GOAL_WAITING_SHOWN} % of it; wake-ups a second reported",
        f"{shares[0]:.3f} % and {shares[1]:.3f} %; {wakes[0]:.1f} and {wakes[1]:.1f} a second",
        [shares[0] / GOAL_WAITING, shares[1] / GOAL_WAITING_SHOWN],
    )


def traced(bench, *command, **environment):
    """The run of a command, and when the stand-in processes that it started ran."""
    trace = bench.scratch / "trace"
    remove(trace)
    environment |= bench.standin | {"EXTRACTA_STANDIN_TRACE": str(trace)}
    return bench.run(*command, **environment), traced_intervals(trace.read_text())


def first_child_milliseconds(bench, command) -> float:
    sample, intervals = traced(bench, *command)
    return (min(begin for begin, _ in intervals) - sample.began) / 1e6


def one_process(bench, design):
    """The command by which one process extracts the views of a default run."""
    directory = bench.fresh_directory("single")
    views = bench.run(bench.driver, "control-file", directory / "control").lines
    outputs = [directory / view for view in views]
    standin = (bench.program("extracta-standin"), "-k", "-c", "-m")
    return (*standin, design, directory / "control", *outputs)


def measure_startup(bench):
    design = bench.make_design(records=0, nets=0)
    whole = (bench.program("VelExtracta"), design, bench.fresh_directory("startup"))
    alone = one_process(bench, design)
    ways = {
        "own": lambda: first_child_milliseconds(bench, whole),
        "child": lambda: first_child_milliseconds(bench, alone),
    }
    own, child = map(statistics.median, bench.compare(bench.sizes.startups, ways).values())
    yield Row(
        "start-up to the first child",
        "the child started directly",
        f"under {GOAL_START} ms more",
        f"{own - child:.1f} ms more ({own:.1f} ms, {child:.1f} ms)",
        [(own - child) / GOAL_START],
    )


def default_run(bench, design, limit: int):
    """The run, and the share of it in which none of its children ran."""
    command = (bench.program("VelExtracta"), design, bench.fresh_directory("parallel"))
    sample, intervals = traced(bench, *command, **bench.hardware_threads(2 * limit))
    return sample, 1 - covered(intervals) / 1e9 / sample.seconds


def measure_whole_run(bench):
    design = bench.make_design(bench.sizes.whole_run_records)
    ways = {limit: lambda limit=limit: default_run(bench, design, limit) for limit in LIMITS}
    ways["single"] = lambda: bench.run(*one_process(bench, design))
    runs = bench.compare(bench.sizes.repetitions, ways)
    single = median_seconds(runs["single"])
    shares, alone = {}, []
    for limit in LIMITS:
        shares[limit] = median_seconds(sample for sample, _ in runs[limit]) / single
        alone.append(statistics.median(share for _, share in runs[limit]))
    remove(bench.scratch / "single", bench.scratch / "parallel")
    yield Row(
        f"default run, limits {', '.join(map(str, LIMITS))}",
        "one process for the same views",
        f"reported; time without a child under {GOAL_OVERHEAD:.0%}",
        f"{', '.join(f'{share:.2f}' for share in shares.values())} times its time; without a "
        f"child {', '.join(f'{share:.2%}' for share in alone)}",
        [max(alone) / GOAL_OVERHEAD],
        shares,
    )
