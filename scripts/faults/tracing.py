"""The system calls of a run as strace shows them, and the selection of those to make fail."""

import collections
import re

# The number of these calls depends on the machine: take the first ones, then some of the rest.
POLLING = {"clock_nanosleep", "epoll_pwait", "epoll_wait", "ioctl", "nanosleep", "poll", "ppoll"}
FIRST_POLLS, POLL_STEP = 20, 5


def strace(*options):
    """The command before the program's. Only the program's own process is traced."""
    return ["strace", "-qq", "-o", "{}/trace", *options]


def calls(trace):
    """The program's calls after its loader: line, name, and number among those of the name."""
    lines = trace.splitlines()
    # The loader ends by unmapping its cache; the program begins after that.
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
