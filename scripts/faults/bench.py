"""Runs of the program, each in its own directory, and what they leave."""

import contextlib
import dataclasses
import functools
import os
import re
import resource
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

from tracing import strace

ROOT = Path(__file__).resolve().parents[2]
OLDER = b"what an older run has left"
OUTCOME = re.compile(  # exit code, standard output and standard error
    r"0:VLX file written: 0x[0-9a-f]+\n:|1::mcm file does not exist: 0x[0-9a-f]+\n|"
    r"1::view creation failed \(1\)\.\n|"
    r"1:VLX file written: 0x[0-9a-f]+\n:view creation failed \(2\)\.\n"
)
EXTRACTIONS = 4  # at once, whatever the machine
HANG_SECONDS = 60  # long enough for a loaded machine
# The program must read what is printed, and end what still runs when a call fails.
SLOW_EXTRACTA = "layer=flood:100:0;layer=sleep:30;conn0=sleep:10"


@dataclasses.dataclass(frozen=True)
class Kind:
    options: list[str]
    older: list[str]  # files in the output folder; the run must not touch notes.md

    @property
    def packs(self):
        return "-z" in self.options

    @property
    def adds(self):
        return "-add" in self.options


ADDED = ["notes.txt", "big.bin"]
KINDS = {
    "cell run that packs": Kind(["-z", "-cell"], ["run.vlx"]),
    "default run that packs": Kind(["-z"], ["run.vlx"]),
    "cell run that moves": Kind(["-cell"], ["layer.txt", "notes.md"]),
    "run with added files": Kind(["-cell", "-add"], ["layer.txt", "notes.md", "big.bin"]),
}


class Bench:
    """The built programs beside a design."""

    def __init__(self, directory, bin_directory):
        self.directory = directory
        self.program = bin_directory / "VelExtracta"
        self.design = directory / "design.mcm"
        self.added = [directory / "added" / name for name in ADDED]
        for variable in ("VELTAR_EXTRACTA_DEBUG", "TKCORE_LOG"):
            os.environ.pop(variable, None)
        os.environ["VELTAR_EXTRACTA_PATHOVERRIDE"] = str(bin_directory / "extracta-standin")
        os.environ["EXTRACTA_STANDIN_FAULT"] = SLOW_EXTRACTA
        os.environ["VELTAR_EXTRACTA_LIMIT"] = str(EXTRACTIONS)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        heed_signals()
        make_design = [bin_directory / "make-design", "--nets", "8", "--records", "200"]
        subprocess.run([*make_design, self.design], check=True)
        self.untouched = self.design.read_bytes()
        (directory / "added").mkdir()
        for file in self.added:
            file.write_bytes(file.name.encode() * 20_000)

    def is_design_untouched(self):
        return self.design.read_bytes() == self.untouched

    def arguments(self, kind):
        return [*kind.options, *([",".join(map(str, self.added))] if kind.adds else [])]

    @functools.cache
    def undisturbed(self, name):
        """The undisturbed run with which all other runs of the kind are compared."""
        run = Run(self, name, strace())
        if run.code != 0:
            sys.exit(f"{name}: fails undisturbed with exit code {run.code}: {run.errors}")
        return run


class Run:
    """A finished run in its own directory: two at a time would use the same names.

    prefix comes before the program on the command line. Once the program runs, meanwhile is called
    with the run and the process. In prefix and environment, {} means the run's directory.
    """

    def __init__(self, bench, name, prefix=(), environment=None, meanwhile=None):
        self.kind = KINDS[name]
        self.directory = Path(tempfile.mkdtemp(dir=bench.directory))
        self.folder = self.directory / "out"
        os.link(bench.design, self.directory / "design.mcm")
        self.folder.mkdir()
        for older in self.kind.older:
            (self.folder / older).write_bytes(OLDER)
        output = self.folder / "run.vlx" if self.kind.packs else self.folder
        arguments = [*bench.arguments(self.kind), self.directory / "design.mcm", output]
        here = str(self.directory)
        prefix = [word.replace("{}", here) for word in prefix]
        changes = {name: text.replace("{}", here) for name, text in (environment or {}).items()}
        command = [*prefix, bench.program, *arguments]
        self.code = self.start(command, os.environ | changes, meanwhile)
        self.left_processes = self.end_left_processes()
        self.output, self.errors = (self.text(name) for name in ("stdout", "stderr"))
        self.trace = self.text("trace")
        self.files = None
        with contextlib.suppress(OSError, zipfile.BadZipFile):  # there is no complete archive
            self.files = self.delivered()

    def text(self, name):
        file = self.directory / name
        return file.read_text(errors="replace") if file.exists() else ""

    def start(self, command, environment, meanwhile):
        """The exit code; negative for a signal, None for a run without an end."""
        out, err = (open(self.directory / name, "wb") for name in ("stdout", "stderr"))
        streams = {"stdin": subprocess.DEVNULL, "stdout": out, "stderr": err}
        apart = {"cwd": self.directory, "env": environment, "start_new_session": True}
        with out, err:
            process = subprocess.Popen(command, **streams, **apart)
        if meanwhile:
            meanwhile(self, process)
        # Do not poll: what is left could be gone before the next look.
        with open(os.pidfd_open(process.pid), "rb") as end:
            if select.select([end], [], [], HANG_SECONDS)[0]:
                return process.wait()
        self.waits_in = self.waits()
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return None

    def waits(self):
        """The kernel function in which each thread of its processes waits."""
        found = []
        for process, command in self.processes().items():
            with contextlib.suppress(OSError):  # it has ended
                threads = Path(f"/proc/{process}/task").glob("*/wchan")
                name = Path(command.split()[0]).name
                found += [f"{name} in {file.read_text()}" for file in threads]
        return found

    def processes(self):
        """The processes with the directory on their command line or as their current one."""
        found = {}
        for process in Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):  # it has ended, or belongs to somebody else
                command = (process / "cmdline").read_text(errors="replace").replace("\0", " ")
                if str(self.directory) in command + os.readlink(process / "cwd"):
                    found[int(process.name)] = command
        return found

    def end_left_processes(self):
        """Command lines of the processes. A run waits until they have ended: none may be left."""
        left = self.processes()
        for process in left:
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)
        return sorted(left.values())

    def left_entries(self):
        """Files that should not be there, as paths in the run's directory."""
        ours = {"design.mcm", "out", "trace", "stdout", "stderr", "asked"}
        left = {entry.name for entry in self.directory.iterdir()} - ours
        for entry in self.folder.iterdir():
            if entry.is_dir() or entry.name.startswith("."):
                left.add(f"out/{entry.name}")
        return sorted(left)

    def delivered(self):
        """The delivered contents by name. An older archive counts as a file."""
        archive = self.folder / "run.vlx"
        if not self.kind.packs or archive.read_bytes() == OLDER:
            delivered = [entry for entry in self.folder.iterdir() if entry.is_file()]
            files = {file.name: file.read_bytes() for file in delivered}
        else:
            with zipfile.ZipFile(archive) as new:
                files = {Path(name).name: new.read(name) for name in new.namelist()}
        # The views contain the design's path.
        place = str(self.directory).encode()
        return {name: contents.replace(place, b"") for name, contents in files.items()}

    def older_files(self):
        return dict.fromkeys(self.kind.older, OLDER)

    def outcome(self):
        """Exit code, standard output and standard error in one text."""
        return f"{self.code}:{self.output}:{self.errors}"

    def forget(self):
        shutil.rmtree(self.directory)


def check_end(run):
    """A line for each broken promise, of those that hold in every run."""
    if run.code is None:
        yield f"still runs after {HANG_SECONDS} s: {run.waits_in}"
    if run.left_processes:
        yield f"leaves the processes {run.left_processes}"


def check_outcome(run, allowed):
    if run.code is not None and not allowed.fullmatch(run.outcome()):
        end = signal.Signals(-run.code).name if run.code < 0 else f"exit code {run.code}"
        yield f"{end}, says {run.output!r} and {run.errors!r}"


def check_files(run, wanted, may_miss=()):
    """A failed run leaves the older files; but a failed move stops half-way."""
    older = run.older_files()
    if run.files is None:
        yield "leaves no whole archive"
        return
    if run.code != 0 and run.files == older:
        return
    may_stay = wanted if run.code != 0 and not run.kind.packs else may_miss
    found = run.files
    wrong = {
        name
        for name in wanted.keys() | found
        if found.get(name) != wanted.get(name)
        and not (name in may_stay and found.get(name) == older.get(name))
    }
    if wrong:
        yield f"exit code {run.code} with other files than an undisturbed run: {sorted(wrong)}"


def heed_signals():
    """Resets signals that our caller ignores, as a shell does in the background, for all runs."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, signal.SIG_DFL)


def build(*targets):
    subprocess.run([ROOT / "scripts/install-packages", "faults"], check=True)
    configure = ["cmake", "--preset", "release"]
    subprocess.run(configure, check=True, stdout=subprocess.DEVNULL, cwd=ROOT)
    command = ["cmake", "--build", "--preset", "release", "--target", *targets]
    subprocess.run(command, check=True, cwd=ROOT)
    return ROOT / "build/release/bin"
