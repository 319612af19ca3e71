"""Measures the product and comparable programs, and prints one table.

The table also goes to result.json, result.md and result.svg in the results directory. Inputs are
made in a temporary directory below it, which is removed at the end.
"""

import argparse
import shutil
import signal
import sys
import tempfile
from pathlib import Path

import packing
import report
import running
import texts
from rows import Row, rows_of
from workbench import FULL, QUICK, Workbench

ROOT = Path(__file__).resolve().parents[2]
PARTS = {
    "packing": packing.measure_many_files,
    "large-file": packing.measure_large_file,
    "interruption": packing.measure_interruption,
    "merge": texts.measure_merge,
    "survey": texts.measure_survey,
    "scheduling": running.measure_scheduling,
    "waiting": running.measure_waiting,
    "startup": running.measure_startup,
    "whole-run": running.measure_whole_run,
}

parser = argparse.ArgumentParser(prog="bench/run", description=__doc__.splitlines()[0])
parser.add_argument("--quick", action="store_true", help="small inputs, no verdicts")
parser.add_argument("--only", choices=PARTS, nargs="+", help="measure only these parts")
parser.add_argument("--results", type=Path, metavar="DIRECTORY", default=ROOT / "build/bench")
arguments = parser.parse_args()
signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))  # removes the inputs

sizes = QUICK if arguments.quick else FULL
results = arguments.results.resolve()
results.mkdir(parents=True, exist_ok=True)
if (free := shutil.disk_usage(results).free) < sizes.disk_bytes:
    sys.exit(f"{results}: {sizes.disk_bytes >> 30} GiB are needed, {free >> 30} GiB are free")
machine = report.describe_machine()
rows: list[Row] = []
with tempfile.TemporaryDirectory(prefix="inputs-", dir=results) as scratch:
    bench = Workbench(ROOT / "build/release", Path(scratch), sizes)
    for part in arguments.only or PARTS:
        print(f"measuring: {part}", file=sys.stderr, flush=True)
        for row in rows_of(part, PARTS[part], bench):
            if arguments.quick:
                row.used = []  # small inputs show only that everything works
            rows.append(row)
        bench.tidy()  # a failed part's files might fill the disk
        report.write(results, machine, sizes, rows, bench.runs)
print(*(f"{name}: {value}" for name, value in machine.items()), sep="\n", end="\n\n")
print(report.table(rows, "simple"))
sys.exit(any(row.failed for row in rows))
