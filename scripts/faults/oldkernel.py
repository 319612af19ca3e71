"""Withholds system calls that are newer than Linux 3.10, or forbidden in an older sandbox.

In each run one of these calls always fails, for the program, its keepers and its extractors; in a
last run all of them fail. Each run must succeed in the older way: exit code 0, the files of an
undisturbed run, no process and no directory left. An interrupted run must still ask its extractors
and their orphans to end before it kills them.
"""

import collections
import os
import re
import signal
import sys
import time
from pathlib import Path

import signals
from bench import EXTRACTIONS, HANG_SECONDS, OUTCOME, Run, check_end, check_files, check_outcome
from tracing import strace
from withhold import is_newer

NOT_THERE_OR_FORBIDDEN = ["ENOSYS", "EPERM"]
# Calls that an older system, a file system or a sandbox has but refuses.
REFUSED = {
    "O_TMPFILE": ["EISDIR", "EOPNOTSUPP"],
    "fchmod": ["EPERM"],
    "linkat": ["EPERM"],
    "renameat2": ["EINVAL"],
}
TOGETHER = [
    "newer=ENOSYS O_TMPFILE=EISDIR",
    "newer=EPERM O_TMPFILE=EOPNOTSUPP linkat=EPERM fchmod=EPERM",
]

INTERRUPTED = "interrupted run with polite extractors"
RUNS = {
    name: name for name in ["default run that packs", "cell run that moves", "run with added files"]
} | {INTERRUPTED: "default run that packs"}
SUCCESS = re.compile(OUTCOME.pattern.partition("|")[0])

# Waits until it is asked to end, and writes that down. So does its child, which has lost its parent.
POLITE_EXTRACTOR = """#!/bin/sh
[ "$1" = --child ] || (setsid "$0" --child &)
trap 'echo "$$ was asked" >>"$ASKED"; exit 0' TERM
echo "$$ is ready" >>"$ASKED"
sleep 600 &
wait
"""
WAITING = 2 * EXTRACTIONS

Injection = collections.namedtuple("Injection", "run withheld")


def words_of(run):
    """The processes that have written each of the two lines."""
    lines = [line.split(" ", 1) for line in run.text("asked").splitlines()]
    return tuple(
        {process for process, word in lines if word == said} for said in ("is ready", "was asked")
    )


def interrupt(run, process):
    """When all have written that they wait: a process that is just starting may not be asked."""
    end = time.monotonic() + HANG_SECONDS
    while len(words_of(run)[0]) < WAITING and process.poll() is None and time.monotonic() < end:
        time.sleep(0.01)
    # A process that traces the program may come before it.
    children = Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()
    traces = "strace" in os.readlink(f"/proc/{process.pid}/exe")
    os.kill(int(children[0]) if traces else process.pid, signal.SIGINT)


def start(bench, name, prefix):
    if name != INTERRUPTED:
        return Run(bench, RUNS[name], prefix)
    extractor = bench.directory / "polite"
    if not extractor.exists():
        extractor.write_text(POLITE_EXTRACTOR)
        extractor.chmod(0o755)
    environment = {"VELTAR_EXTRACTA_PATHOVERRIDE": str(extractor), "ASKED": "{}/asked"}
    return Run(bench, RUNS[name], prefix, environment, interrupt)


def check(bench, name, run):
    yield from check_end(run)
    if name == INTERRUPTED:
        ready, asked = words_of(run)
        if len(ready) < WAITING or ready != asked:
            yield f"of {WAITING} processes {len(ready)} waited, and {len(asked)} were asked to end"
        yield from check_outcome(run, signals.OUTCOMES["SIGINT"])
        if run.code == 0:
            yield "is not interrupted"
        yield from check_files(run, run.older_files())
    else:
        yield from check_outcome(run, SUCCESS)
        yield from check_files(run, bench.undisturbed(RUNS[name]).files)
    if entries := run.left_entries():
        yield f"leaves {entries}"


def perform(bench, injection):
    name, withheld = injection
    launcher = Path(__file__).with_name("withhold.py")
    run = start(bench, name, [sys.executable, "-B", str(launcher), *withheld.split(), "--"])
    problems = [*check(bench, name, run)]
    run.forget()
    if problems:
        return "broke a promise", [f"{name}, {withheld}: {problem}" for problem in problems]
    return "did their work in the older way", []


def injections(bench):
    for name in RUNS:
        trace = start(bench, name, strace("-f")).trace
        made = sorted(set(re.findall(r"^\d+ +(\w+)\(", trace, re.MULTILINE)))
        refused = REFUSED | ({} if "O_TMPFILE" in trace else {"O_TMPFILE": []})
        for call in [*made, "O_TMPFILE"]:
            newer = NOT_THERE_OR_FORBIDDEN if is_newer(call) else []
            for error in newer + refused.get(call, []):
                yield Injection(name, f"{call}={error}")
        for withheld in TOGETHER:
            yield Injection(name, withheld)
