"""The suite's folders, the timing of commands, and the inputs."""

import dataclasses
import functools
import itertools
import os
import shutil
import statistics
import subprocess
import time
from pathlib import Path
from typing import NamedTuple

MIB, GIB = 1 << 20, 1 << 30


@dataclasses.dataclass(frozen=True)
class Sizes:
    packing_bytes: int
    packing_records: int  # connectivity records of each design whose views are packed
    large_bytes: int  # packed as one file, and merged from pieces
    interrupted_bytes: int  # packed as one file when the interruption comes
    survey_records: int  # in the larger one of two
    children: int
    silent_milliseconds: int
    startups: int
    whole_run_records: int
    repetitions: int  # of long measurements
    disk_bytes: int  # at the peak, with some room


FULL = Sizes(10**9, 300_000, 4 * GIB, GIB, 3 * 10**7, 200, 20_000, 30, 10**6, 3, 12 * GIB)
QUICK = Sizes(4 * 10**7, 30_000, 256 * MIB, 256 * MIB, 10**7, 40, 4_000, 10, 30_000, 1, 2 * GIB)


class Told(NamedTuple):
    """The cost that bench-driver prints in its last line."""

    seconds: float
    user: float  # seconds of the processor
    system: float
    waits: float  # how often it went to sleep
    peak: float  # bytes of memory


@dataclasses.dataclass(frozen=True)
class Sample:
    began: int  # nanoseconds of the monotonic clock
    seconds: float
    lines: list[str]

    @property
    def told(self) -> Told:
        return Told(*map(float, self.lines[-1].split()))


class Workbench:
    def __init__(self, build: Path, scratch: Path, sizes: Sizes):
        self.build, self.scratch, self.sizes = build, scratch, sizes
        self.driver = self.program("bench-driver")
        self.standin = {"VELTAR_EXTRACTA_PATHOVERRIDE": str(self.program("extracta-standin"))}
        self.runs: list[dict] = []  # every single result of every comparison

    def program(self, name: str) -> Path:
        return self.build / "bin" / name

    def run(self, *command, errors=None, **environment: str) -> Sample:
        """Runs it in the scratch directory, without a status line. A failure ends the part."""
        words = [str(word) for word in command]
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": errors}
        environment = {**os.environ, "TERM": "dumb", **environment}
        began = time.monotonic_ns()
        run = subprocess.run(words, cwd=self.scratch, env=environment, **streams)
        seconds = (time.monotonic_ns() - began) / 1e9
        if run.returncode:
            raise RuntimeError(f"{' '.join(words[:2])} ... ended with {run.returncode}")
        return Sample(began, seconds, run.stdout.decode(errors="replace").splitlines())

    def compare(self, repetitions: int, measurements: dict, fills_memory: bool = False) -> dict:
        """The list of results of each command, or function. Each round measures all of them, so
        that other work of the machine affects all alike; the order changes with each round. If they
        fill the memory, there is one more round, which does not count: a virtual machine may have
        to get unused memory back from its host."""
        results: dict = {name: [] for name in measurements}
        for turn in range(repetitions + fills_memory):
            for name in list(measurements)[:: -1 if turn % 2 else 1]:
                # Unwritten data of one measurement must not slow down the next.
                os.sync()
                measure = measurements[name]
                results[name].append(measure() if callable(measure) else self.run(*measure))
        if fills_memory:
            results = {name: taken[1:] for name, taken in results.items()}
        self.runs.append(results)
        return results

    def tidy(self) -> None:
        """Removes everything but the view files, which several parts use."""
        remove(*(path for path in self.scratch.iterdir() if not path.name.startswith("views")))

    def fresh_directory(self, name: str) -> Path:
        remove(self.scratch / name)
        (self.scratch / name).mkdir()
        return self.scratch / name

    def hardware_threads(self, number: int) -> dict:
        """Makes the program see a machine with that many."""
        library = self.build / "tests/endtoend/libsystem_calls.so"
        return {"LD_PRELOAD": str(library), "HARDWARE_THREADS": str(number)}

    def make_design(self, records: int, nets: int = 200, seed: int = 1) -> Path:
        """There is only one at a time."""
        design = self.scratch / "design.mcm"
        options = ("--records", records, "--nets", nets, "--seed", seed)
        self.run(self.program("make-design"), *options, design)
        return design

    def extract_views(self, name: str, records: int, seed: int = 1, nets: int = 200) -> list[Path]:
        """All files of a default run on a made design that would be packed."""
        command = (self.program("VelExtracta"), self.make_design(records, nets, seed))
        target = self.fresh_directory(name)
        self.run(*command, target, **self.standin, **self.hardware_threads(4))
        return sorted(target.iterdir())

    @functools.cached_property
    def view_files(self) -> list[Path]:
        """The files of enough designs for the bytes to pack."""
        files: list[Path] = []
        for seed in itertools.count(1):
            files += self.extract_views(f"views{seed}", self.sizes.packing_records, seed)
            if total_size(*files) >= self.sizes.packing_bytes:
                return files

    def write_text(self, path: Path, size: int) -> Path:
        """The view files one after the other, repeated until the size is reached."""
        with path.open("wb") as target:
            for file in itertools.cycle(self.view_files):
                target.write(file.read_bytes()[: size - target.tell()])
                if target.tell() == size:
                    return path


def median_seconds(samples) -> float:
    return statistics.median(sample.seconds for sample in samples)


def peak_memory(samples) -> float:
    return max(sample.told.peak for sample in samples)


def total_size(*files: Path) -> int:
    return sum(file.stat().st_size for file in files)


def remove(*paths: Path) -> None:
    for path in paths:
        if path.is_dir():
            shutil.rmtree(path)
        else:
            path.unlink(missing_ok=True)
