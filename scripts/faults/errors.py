"""Lets each occurrence of each call of the program's own process that can fail fail once.

The run must end with exit code 0 and the files of an undisturbed run, or with the outcome lines of a
failed run and the older archive or a complete new one. It must leave no process, and no directory
unless the failed call was to remove it.
"""

import collections
import re
import signal
import sys

from bench import KINDS, OUTCOME, Run, check_end, check_files, check_outcome
from tracing import calls, strace

# The errors of calls. If there are two, callers must handle them differently.
ERRORS = {
    "EACCES": "chdir fchdir",
    "EAGAIN": "clone clone3 fork getrandom vfork",
    "EINTR": "clock_nanosleep epoll_pwait epoll_wait nanosleep poll ppoll pwrite64 read wait4 "
    "waitid write writev",
    "EIO": "access faccessat faccessat2 fdatasync fstat fsync getdents64 ioctl lseek lstat "
    "newfstatat pread64 read readlink readlinkat readv rename renameat renameat2 rmdir stat statfs "
    "statx unlink unlinkat",
    "EMFILE": "dup dup2 dup3 epoll_create1 eventfd2 inotify_init1 open openat pidfd_open pipe2 "
    "signalfd4 socketpair timerfd_create",
    "ENOENT": "getcwd",
    "ENOMEM": "fcntl mmap mprotect mremap poll ppoll",
    "ENOSPC": "copy_file_range epoll_ctl fallocate ftruncate inotify_add_watch link linkat mkdir "
    "mkdirat pwrite64 sendfile write writev",
    "EPERM": "fchmod fchmodat fchown utimensat",
}

# Calls that cannot fail, as strace writes them, and why. A call in neither table ends the command:
# a person has to decide.
LEFT_OUT = {
    r"close\(": "injected, it would leave the descriptor open, which the system never does",
    r"brk\(": "tells failure without an error, and malloc then turns to mmap",
    r"munmap\(": "gives back whole mappings",
    r"fcntl\(\d+, (F_GETF|F_SETFD|F_SETFL, (?!.*ASYNC))": "flags of an open descriptor",
    r"(wait4|waitid)\(.*WNOHANG": "nobody else reaps our child, and what does not wait goes on",
    r"(kill|tgkill|pidfd_send_signal)\(": "the child is there until it is reaped",
    r"rt_sig\w+\(": "the signals exist",
    r"epoll_ctl\(\d+, EPOLL_CTL_DEL": "what was added is there",
    r"prctl\(PR_SET_CHILD_SUBREAPER": "each system that we run on knows it",
    r"futex\(": "threads wait for each other through it; there is nothing that could be missing",
    r"(getpid|getsid|gettid|uname|prlimit64|sysinfo|sched_getaffinity)\(": "tells what is known",
    r"umask\(": "sets a value of the process and tells the one before",
    r"(madvise|fadvise64|sync_file_range)\(": "a hint",
    r"restart_syscall\(": "the rest of a wait that a signal has cut short",
    r"exit_group\(": "ends the process",
}

OUTCOMES = {
    "": OUTCOME,
    # Without memory the line about the written file may be missing.
    "ENOMEM": re.compile(OUTCOME.pattern + r"|1::view creation failed \(2\)\.\n"),
}
WRITES_OUTCOME = 'write(1, "VLX file written: '
UNWRITTEN = re.compile("0::")
# If an added file cannot be copied, the program ends and leaves the working directory.
ABORT = re.compile(f"-{signal.SIGABRT.value}::")
WORKING_DIRECTORY = re.compile(r"(out/)?extract-?\d+")
# If the status of a path cannot be read, the program takes it as missing. That is no failure, neither
# for the working directory, which then has nothing to deliver, nor for an added file.
ASKS_FOR_WORKING_DIRECTORY = re.compile(r'\w*stat\w*\([^"]*"[^"]*/extract-?\d+/?"')
ASKS_FOR_ADDED_FILE = re.compile(r'\w*stat\w*\([^"]*"[^"]*/added/([^"]*)"')
OPENS_ADDED_FILE = re.compile(r'open\w*\([^"]*"[^"]*/added/')

Injection = collections.namedtuple("Injection", "run call occurrence error")


class FailedCall:
    """The call that strace made fail in a run, with the run's trace before it."""

    def __init__(self, run):
        trace, injected, _ = run.trace.partition(" (INJECTED)")
        before, _, line = trace.rpartition("\n")
        self.line = line if injected else ""  # empty if it was not reached
        self.before = before if injected else ""

    def writes_outcome(self):
        return self.line.startswith(WRITES_OUTCOME)

    def removes(self):
        """Only the removal comes after the outcome."""
        return WRITES_OUTCOME in self.before

    def copies(self):
        """Between the opening of the first added file and the listing before the delivery."""
        opened = [line for line in self.before.splitlines() if OPENS_ADDED_FILE.match(line)]
        copying = self.before.rpartition(opened[-1])[2] if opened else "getdents64("
        return OPENS_ADDED_FILE.match(self.line) or "getdents64(" not in copying

    def may_miss(self, wanted):
        """The names of files that need not be delivered."""
        if ASKS_FOR_WORKING_DIRECTORY.match(self.line) and "getdents64(" not in self.before:
            return set(wanted)
        asked = ASKS_FOR_ADDED_FILE.match(self.line)
        return {asked[1]} if asked else set()


def check(run, call, error, wanted):
    yield from check_end(run)
    if call.copies() and ABORT.fullmatch(run.outcome()):
        yield from check_files(run, run.older_files())
        return
    unwritten = call.writes_outcome() and UNWRITTEN.fullmatch(run.outcome())
    if not unwritten:
        yield from check_outcome(run, OUTCOMES.get(error, OUTCOMES[""]))
    yield from check_files(run, wanted, call.may_miss(wanted))
    entries = run.left_entries()
    if call.removes():
        entries = [entry for entry in entries if not WORKING_DIRECTORY.fullmatch(entry)]
    if entries:
        yield f"leaves {entries}"


def perform(bench, injection):
    """Makes one call of one run fail; returns the outcome, and a line for each broken promise."""
    name, call, occurrence, error = injection
    fault = f"--inject={call}:error={error}:when={occurrence}"
    run = Run(bench, name, strace("--signal=none", f"--trace={call},openat,getdents64,write", fault))
    failed = FailedCall(run)
    problems = [*check(run, failed, error, bench.undisturbed(name).files)]
    run.forget()
    title = f"{name}, {call} {occurrence} {error}, {failed.line or 'not reached'}"
    if problems:
        return "broke a promise", [f"{title}: {problem}" for problem in problems]
    if not failed.line:
        return "were not reached", []
    return "failed cleanly" if run.code else "had no effect", []


def injections(bench):
    for name in KINDS:
        for line, call, occurrence in calls(bench.undisturbed(name).trace):
            if any(re.match(use, line) for use in LEFT_OUT):
                continue
            errors = [error for error, calls in ERRORS.items() if call in calls.split()]
            if not errors:
                sys.exit(f"neither to be injected nor left out: {line}")
            for error in errors:
                yield Injection(name, call, occurrence, error)
