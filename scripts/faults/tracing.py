"""The system calls of a run as strace tells them, and which of them are worth a fault."""

import collections
import re

# How often these are called depends on the machine: the first of them count, then some of the rest.
POLLING = {"clock_nanosleep", "epoll_pwait", "epoll_wait", "ioctl", "nanosleep", "poll", "ppoll"}
FIRST_POLLS, POLL_STEP = 20, 5


def strace(*options):
    """What to put before the program. Its children run freely: only its own process is looked at."""
    return ["strace", "-qq", "-o", "{}/trace", *options]


def calls(trace):
    """Those of the program behind its loader: line, name, and how many of the name it was."""
    lines = trace.splitlines()
    # The last that the loader does is to let go of its cache: before, the program is not there.
    loaded = next(number for number, line in enumerate(lines) if line.startswith("munmap("))
    counts = collections.Counter()
    for number, line in enumerate(lines):
        call = re.match(r"(\w+)\(", line)
        if not call:
            continue  # a signal
        name = call[1]
        counts[name] += 1
        is_skipped = counts[name] > FIRST_POLLS and counts[name] % POLL_STEP
        if number > loaded and not (name in POLLING and is_skipped):
            yield line, name, counts[name]
