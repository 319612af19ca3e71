"""Runs random extractors with random options and random signals for a time, and checks every promise
after each run. Prints a line for each broken promise, with the seed of the run. To repeat a run:
scripts/soak 0 SEED. The time of a signal is drawn, too; how far the run has come by then depends on
the machine.

All runs are in their own process namespace, which shows and ends the processes that a run leaves. A
limit on its processes makes extractors harmless that start others without end. If started by root,
the program runs as an unused user.
"""

import argparse
import collections
import contextlib
import os
import random
import re
import resource
import select
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from bench import build, heed_signals
from plan import IDLE, Plan
from promises import check, is_running, may_be_left
from site_of_run import Site

MOST_PROCESSES = 250
FIRST_USER, USERS = 40_000, 20_000  # unused, also by another soak
# Long enough for a loaded machine.
LONGEST_RUN = 120
LONGEST_END = 60
PROGRAMS = ["VelExtracta", "extracta-standin", "make-design"]


def other_processes():
    """Running processes, without the two of the soak itself: command lines by number."""
    found = {}
    for process in Path("/proc").glob("[0-9]*"):
        number = int(process.name)
        with contextlib.suppress(OSError):
            command = (process / "cmdline").read_text(errors="replace").replace("\0", " ")
            # A process that is about to end, or to become another program, has no command line.
            if command and number not in {1, os.getpid()}:
                found[number] = command.strip()
    return found


def end_all_processes():
    """Stops the processes before it ends them: one may start others without end."""
    while left := other_processes():
        for sent in (signal.SIGSTOP, signal.SIGKILL):
            for process in left:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(process, sent)
        time.sleep(0.01)


def has_news(file, until):
    return bool(select.select([file], [], [], max(0, until - time.monotonic()))[0])


def fill(pipe):
    """Opens a pipe that nobody reads from, and fills it."""
    descriptor = os.open(pipe, os.O_RDWR | os.O_NONBLOCK)
    with contextlib.suppress(BlockingIOError):
        while True:
            os.write(descriptor, bytes(4096))
    return descriptor


def is_heeded(process, number):
    """Whether the process catches or ignores the signal; at its start it does not yet."""
    status = Path(f"/proc/{process}/status").read_text()
    masks = re.findall(r"^Sig(?:Ign|Cgt):\s*(\w+)", status, re.MULTILINE)
    return any(int(mask, 16) >> (number - 1) & 1 for mask in masks)


class SoakRun:
    """The program's run by the plan, from its start to its end."""

    def __init__(self, soak, plan, site):
        self.soak, self.plan, self.site = soak, plan, site
        self.sent = set()  # signals to the program
        self.seconds_to_end = 0  # from the first signal that ends it
        self.outcome = None
        self.start(soak.program)
        self.code = self.await_end()
        self.look_at_processes()
        end_all_processes()
        self.output, self.errors = (
            (site.tools / name).read_text(errors="replace") for name in ("stdout", "stderr")
        )

    def look_at_processes(self):
        """Nothing may be left, except processes of extractors that ended by themselves."""
        ended = self.lines("ended")
        # If the program has no time to end its processes, the keepers do so.
        is_killed = self.code is not None and -self.code in {signal.SIGKILL, signal.SIGQUIT}
        limit = time.monotonic() + (LONGEST_END if is_killed else 0)
        while True:
            found = other_processes()
            left = {n: command for n, command in found.items() if not may_be_left(n, command, ended)}
            if not left or time.monotonic() > limit:
                break
            time.sleep(0.05)
        self.left = list(left.values())
        daemons = [line.split() for line in self.lines("daemons")]
        self.gone_daemons = [n for n, stem in daemons if stem in ended and not is_running(n)]

    def lines(self, name):
        file = self.site.tools / name
        return set(file.read_text().splitlines()) if file.exists() else set()

    def command(self, program):
        plan, place = self.plan, f"{self.site.path}/" if self.plan.is_absolute else ""
        command = [str(program), *plan.command_line(), place + plan.design, place + plan.output]
        if plan.is_silent:
            command = ["sh", "-c", 'exec "$@" >&- 2>&-', "sh", *command]
        return command

    def environment(self, program):
        tools = self.site.tools
        extractor = tools / "extractor"
        extractor.write_text(self.plan.extractor(program.with_name("extracta-standin"), tools))
        extractor.chmod(0o755)
        log = self.plan.log.replace("@tools", str(tools))
        drawn = {"TKCORE_LOG": log, "VELTAR_EXTRACTA_LIMIT": self.plan.limit}
        drawn |= {"PATH": os.environ["PATH"], "VELTAR_EXTRACTA_PATHOVERRIDE": str(extractor)}
        return {name: text for name, text in drawn.items() if text}

    def start(self, program):
        def prepare():
            os.umask(self.plan.umask)
            resource.setrlimit(resource.RLIMIT_NPROC, (self.soak.most_processes,) * 2)
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            if self.plan.is_hang_up_ignored:
                signal.signal(signal.SIGHUP, signal.SIG_IGN)

        self.full_pipe = fill(self.site.tools / "pipe") if self.plan.is_log_stuck else None
        out, err = (open(self.site.tools / name, "wb") for name in ("stdout", "stderr"))
        streams = {"stdin": subprocess.DEVNULL, "stdout": out, "stderr": err}
        apart = {"cwd": self.site.path, "preexec_fn": prepare, "start_new_session": True}
        if (user := self.soak.user) is not None:
            apart |= {"user": user, "group": user, "extra_groups": []}
        command, environment = self.command(program), self.environment(program)
        with out, err:
            self.process = subprocess.Popen(command, env=environment, **streams, **apart)
        self.began = time.monotonic()

    def await_end(self):
        """The exit code, negative for a signal; None if it does not end."""
        limit = self.began + LONGEST_RUN
        asked = None
        with open(os.pidfd_open(self.process.pid), "rb") as end:
            for at, name, whom in self.plan.signals:
                if has_news(end, min(self.began + at, limit)):
                    break
                self.send(name, whom)
                if asked is None and whom == "program" and name in self.plan.ending_signals():
                    asked = time.monotonic()
                    limit = asked + LONGEST_END
            has_ended = has_news(end, limit)
        now = time.monotonic()
        self.seconds = now - self.began
        self.seconds_to_end = now - asked if asked else 0
        if self.full_pipe is not None:
            os.close(self.full_pipe)
        return self.process.wait() if has_ended else None

    def send(self, name, whom):
        if whom == "program":
            if name not in IDLE or is_heeded(self.process.pid, signal.Signals[name]):
                self.sent.add(name)
                self.process.send_signal(signal.Signals[name])
            return
        found = [n for n, command in other_processes().items() if whom in command]
        if found:
            with contextlib.suppress(ProcessLookupError):
                os.kill(self.plan.random.choice(sorted(found)), signal.Signals[name])


class Soak:
    def __init__(self, directory, programs, user, most_processes):
        self.directory = directory
        self.most_processes = most_processes
        self.user = user
        (directory / "bin").mkdir()
        for name in PROGRAMS:
            shutil.copy(programs / name, directory / "bin")
        self.program = directory / "bin/VelExtracta"
        self.design = directory / "design.mcm"
        make_design = [directory / "bin/make-design", "--nets", "8", "--records", "200"]
        subprocess.run([*make_design, self.design], check=True)
        self.wanted = {}  # files of undisturbed runs, by the options they depend on
        self.outcomes = collections.Counter()
        self.longest_end = 0
        self.broken = 0
        directory.chmod(0o755)

    @contextlib.contextmanager
    def run(self, plan):
        place = Path(tempfile.mkdtemp(dir=self.directory))
        place.chmod(0o755)
        try:
            site = Site(place, self.design, self.user)
            yield site, SoakRun(self, plan, site)
        finally:
            end_all_processes()
            subprocess.run(["rm", "-rf", place], check=True)

    def wanted_by(self, plan):
        """The files of an undisturbed run with these options; nothing if it cannot deliver."""
        key = (plan.is_cell, *plan.nets, *plan.added)
        if plan.may_deliver() and not plan.added_fails and key not in self.wanted:
            with self.run(plan.undisturbed()) as (site, run):
                if run.code != 0:
                    sys.exit(f"fails undisturbed with {run.code}: {run.command(self.program)}")
                self.wanted[key] = site.folder_files("empty")
        return self.wanted.get(key, {})

    def perform(self, seed, is_told):
        plan = Plan(seed)
        wanted = self.wanted_by(plan)
        with self.run(plan) as (site, run):
            problems = list(check(plan, site, run, wanted))
            if is_told:
                tell(plan, site, run)
        for problem in problems:
            print(f"seed {seed}: {problem}", flush=True)
        self.outcomes[run.outcome or "hung"] += 1
        self.longest_end = max(self.longest_end, run.seconds_to_end)
        self.broken += bool(problems)


def tell(plan, site, run):
    print(shlex.join(run.command(run.soak.program)))
    for when, commands in plan.commands.items():
        for pattern, text in commands:
            print(f"{when} the work of {pattern}: {text}")
    for at, name, whom in plan.signals:
        print(f"{at:.3f} s: {name} to {whom}")
    told = {name: value for name, value in vars(plan).items() if isinstance(value, (bool, int, str))}
    print(told)
    print(f"ends with {run.code} after {run.seconds:.3f} s: {run.outcome}")
    log = site.tools / "log"
    if log.exists():
        print(log.read_text(errors="replace"), end="")


def soak(directory, options):
    bench = Soak(directory, options.bin, options.user, options.others + MOST_PROCESSES)
    began = time.monotonic()
    seed = options.seed
    with contextlib.suppress(KeyboardInterrupt):
        while True:
            bench.perform(seed, options.seconds == 0)
            seed += 1
            if time.monotonic() - began >= options.seconds:
                break
    counts = "".join(f"{count} {outcome}, " for outcome, count in sorted(bench.outcomes.items()))
    print(
        f"{seed - options.seed} runs from seed {options.seed} on: {counts}longest end after a "
        f"signal {bench.longest_end:.1f} s, {bench.broken} broke a promise"
        + (", each to be repeated by scripts/soak 0 SEED" if bench.broken else "")
    )
    return 1 if bench.broken else 0


def start_apart(options):
    """Never returns: starts this script again, in its own process namespace."""
    # The new /proc is visible only inside, whatever the propagation.
    apart = ["unshare", "--pid", "--fork", "--kill-child", "--propagation", "unchanged"]
    apart += ["--mount-proc"]
    inside = ["--inside", "--bin", str(options.bin)]
    if os.getuid() == 0:
        inside += ["--user", str(FIRST_USER + os.getpid() % USERS)]
    else:
        apart += ["--user", "--map-root-user"]
        inside += ["--others", str(len(list(Path("/proc").glob("[0-9]*"))))]
    script = [sys.executable, "-B", __file__, str(options.seconds), str(options.seed)]
    os.execvp(apart[0], [*apart, *script, *inside])


def reap_for(work):
    """Is the first process there, which adopts orphans, while a child does the work."""
    worker = os.fork()
    if worker == 0:
        sys.exit(work())
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    while True:
        process, status = os.wait()
        if process == worker:
            return os.waitstatus_to_exitcode(status)


def main():
    parser = argparse.ArgumentParser(
        prog="scripts/soak",
        description=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("seconds", type=float, help="0 for one run, printed in full")
    parser.add_argument("seed", type=int, nargs="?", help="of the first run; else any")
    parser.add_argument("--bin", type=Path, metavar="DIR", help="the built programs; else built")
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--user", type=int, help=argparse.SUPPRESS)
    parser.add_argument("--others", type=int, default=0, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if not options.inside:
        options.bin = (options.bin or build(*PROGRAMS)).resolve()
        options.seed = random.randrange(10**9) if options.seed is None else options.seed
        start_apart(options)
    heed_signals()
    with tempfile.TemporaryDirectory(prefix="soak.") as temporary:
        return soak(Path(temporary), options)


if __name__ == "__main__":
    sys.exit(reap_for(main) if os.getpid() == 1 else main())
