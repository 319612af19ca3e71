"""Makes the system calls of VelExtracta fail, and checks the promises of each run.

Three modes, in turn if none is named:

errors      each call that can really fail does so once, one a run
signals     SIGINT and SIGTERM arrive at each call, one a run
old-kernel  what came after Linux 3.10 is not there, or forbidden as in a sandbox
"""

import argparse
import collections
import contextlib
import os
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import errors
import oldkernel
import signals
from bench import ROOT, Bench, build

MODES = {"errors": errors, "signals": signals, "old-kernel": oldkernel}


def every(step, found):
    if step == 1:
        return found
    commits = ""
    with contextlib.suppress(OSError, subprocess.CalledProcessError):  # no git, or no checkout
        counting = ["git", "rev-list", "--count", "HEAD"]
        commits = subprocess.check_output(counting, stderr=subprocess.DEVNULL, cwd=ROOT)
    return found[int(commits or 0) % step :: step]


def perform_all(bench, mode, found):
    """Returns the number of broken promises."""
    outcomes = collections.Counter()
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for outcome, problems in pool.map(lambda one: MODES[mode].perform(bench, one), found):
            outcomes[outcome] += 1
            for problem in problems:
                print(f"{mode}: {problem}", flush=True)
    broken = outcomes.pop("broke a promise", 0) + (not bench.is_design_untouched())
    counts = "".join(f"{count} {outcome}, " for outcome, count in sorted(outcomes.items()))
    runs = len({injection.run for injection in found})
    summary = f"{len(found)} injections into {runs} runs: {counts}{broken} broke a promise"
    print(f"{mode}: {summary}", flush=True)
    return broken


def main(bench, options):
    broken = 0
    for mode in [options.mode] if options.mode in MODES else MODES:
        found = every(options.every, list(MODES[mode].injections(bench)))
        if options.list:
            for injection in found:
                print(f"{mode}:", *injection)
        else:
            broken += perform_all(bench, mode, found)
    return 1 if broken else 0


if __name__ == "__main__":
    parser = argparse.ArgumentParser(
        prog="scripts/inject-faults",
        description=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("--mode", choices=[*MODES, "all"], default="all")
    parser.add_argument("--every", type=int, default=1, metavar="N",
                        help="only every Nth; which ones moves on with each commit")
    parser.add_argument("--list", action="store_true", help="only tell what would be injected")
    parser.add_argument("--bin", type=Path, metavar="DIR",
                        help="the built programs; without it they are built in build/release/bin")
    arguments = parser.parse_args()
    programs = arguments.bin or build("VelExtracta", "extracta-standin", "make-design")
    with tempfile.TemporaryDirectory(prefix="inject-faults.") as temporary:
        sys.exit(main(Bench(Path(temporary), programs.resolve()), arguments))
