"""Runs commands, one beside the other, and tells what they took."""

import dataclasses
import os
import signal
import statistics
import subprocess
from pathlib import Path


class CommandFailed(Exception):
    pass


@dataclasses.dataclass(frozen=True)
class Sample:
    began: int  # nanoseconds of the monotonic clock
    seconds: float
    starting_seconds: float  # those of them until the command was started
    processor_seconds: float
    peak_memory: int  # bytes; the largest of the command's processes
    output: str


class Launcher:
    """Starts every command by the same small program, which asks the system what it took."""

    def __init__(self, spawn_program: Path, scratch: Path):
        self.spawn_program = spawn_program
        self.report = scratch / "report"

    def run(self, command, *, count=1, environment=None, directory=None) -> Sample:
        words = [str(word) for word in command]
        launched = [str(self.spawn_program), str(self.report), str(count), *words]
        process = subprocess.Popen(
            launched,
            cwd=directory,
            env={**os.environ, **(environment or {})},
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            process_group=0,
        )
        try:
            output = process.communicate()[0].decode(errors="replace")
        except BaseException:
            # The suite is being ended: so is the command, which the launcher would outlive.
            os.killpg(process.pid, signal.SIGTERM)
            process.wait()
            raise
        if process.returncode != 0:
            shown = " ".join(words)[:300]
            raise CommandFailed(f"{shown} ended with code {process.returncode}: {output.strip()}")
        began, *seconds, memory = self.report.read_text().split()
        return Sample(int(began), *map(float, seconds), int(memory), output)


def interleaved(repetitions, *measurements):
    """One list of results for each measurement. Each is taken in every round, so that whatever
    else the machine does meets all of them alike; the order turns from round to round."""
    results = [[] for _ in measurements]
    for turn in range(repetitions):
        order = list(range(len(measurements)))
        for index in order if turn % 2 == 0 else reversed(order):
            # What one measurement has left to be written must not slow down the next.
            os.sync()
            results[index].append(measurements[index]())
    return results


def median_seconds(samples) -> float:
    return statistics.median(sample.seconds for sample in samples)


def median_ratio(samples, others) -> float:
    return median_seconds(samples) / median_seconds(others)
