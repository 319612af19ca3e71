"""Sends SIGINT or SIGTERM at the return of each call of the program's own process, one in each run.

Before the delivery begins, the run must end by that signal and leave what was there before. After
that it must end with exit code 0 and deliver everything. It must leave no process and no directory.
"""

import collections
import re
import signal

from bench import KINDS, OUTCOME, Run, check_end, check_files, check_outcome
from tracing import calls, strace

SIGNALS = ["SIGINT", "SIGTERM"]
# Outcome of a failed run; empty before the program handles the signal.
OUTCOMES = {
    name: re.compile(
        r"0:VLX file written: 0x[0-9a-f]+\n:|"
        rf"-{signal.Signals[name].value}:(:|:view creation failed \(1\)\.\n|"
        r"VLX file written: 0x[0-9a-f]+\n:view creation failed \(2\)\.\n)"
    )
    for name in SIGNALS
}

# The first of these calls puts an archive or a file in its place; then the run finishes.
DELIVERS = re.compile(r"^(linkat|renameat2?)\(", re.MULTILINE)

Injection = collections.namedtuple("Injection", "run call occurrence signal")


def check(run, name, wanted, has_delivered):
    yield from check_end(run)
    yield from check_outcome(run, OUTCOMES[name])
    yield from check_files(run, wanted if run.code == 0 else run.older_files())
    if run.code is not None and has_delivered != (run.code == 0):
        yield f"ends with {run.code}, although the delivery had {'' if has_delivered else 'not '}begun"
    if entries := run.left_entries():
        yield f"leaves {entries}"


def perform(bench, injection):
    """Sends one signal to one run; returns the outcome, and a line for each broken promise."""
    name, call, occurrence, sent = injection
    signalling = f"--inject={call}:signal={sent}:when={occurrence}"
    traced = f"--trace={call},linkat,renameat,renameat2"
    run = Run(bench, name, strace(f"--signal={sent}", traced, signalling))
    before, arrival, _ = run.trace.partition(f"\n--- {sent} ")
    has_delivered = not arrival or bool(DELIVERS.search(before))
    problems = [*check(run, sent, bench.undisturbed(name).files, has_delivered)]
    run.forget()
    title = f"{name}, {sent} at {call} {occurrence}, {before.rpartition(chr(10))[2]}"
    if problems:
        return "broke a promise", [f"{title}: {problem}" for problem in problems]
    if not arrival:
        return "were not reached", []
    return "came too late" if run.code == 0 else "ended the run", []


def injections(bench):
    for name in KINDS:
        for _, call, occurrence in calls(bench.undisturbed(name).trace):
            for sent in SIGNALS:
                yield Injection(name, call, occurrence, sent)
