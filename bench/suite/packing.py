"""Packing: many files, one large file, and an interruption in the middle of it."""

import filecmp
import os
import random
import signal
import statistics
import subprocess
import time
from pathlib import Path

from rows import Row
from workbench import GIB, MIB, median_seconds, peak_memory, remove, total_size

THREADS = (1, 2, 4, 8)
GOAL_SPEED, GOAL_SIZE = 4.5, 0.96  # two threads against zip
GOAL_ONE_THREAD = 2.73  # against zip
GOAL_TWO_THREADS = 1.6  # against one
GOAL_ELSEWHERE = 0.10
GOAL_MEMORY = "under 16 MiB and 4 MiB a thread"
GOAL_LARGE_FILE = 0.9
GOAL_INTERRUPTION, INTERRUPTIONS = 0.2, 8

ZIP = ("/usr/bin/zip", "-6", "-q")
SEVEN = ("/usr/bin/7z", "a", "-tzip", "-bso0", "-bsp0")
READERS = [
    ("/usr/bin/unzip", "-tqq"),
    ("/usr/bin/7z", "t", "-bso0", "-bsp0"),
    ("/usr/bin/bsdtar", "-xOf"),
    ("/usr/bin/python3", "-m", "zipfile", "-t"),
]


def check_archive(archive, readers) -> None:
    """Fails unless other programs can read the archive, with its checksums."""
    checks = [subprocess.Popen([*each, archive], stdout=subprocess.DEVNULL) for each in readers]
    if any([check.wait() for check in checks]):
        raise RuntimeError(f"{archive} cannot be read by all of {readers}")


class Packings:
    """A set of files that several commands pack in turns."""

    def __init__(self, bench, repetitions: int, commands: dict, files: dict):
        self.archives = {name: bench.scratch / f"{name}.zip" for name in commands}
        self.bytes = {name: total_size(*files[name]) for name in commands}

        def pack(name):
            remove(self.archives[name])  # zip and 7z would add to it
            # 7z keeps no folders of absolute paths; the designs have files of the same names.
            relative = [file.relative_to(bench.scratch) for file in files[name]]
            return bench.run(*commands[name], self.archives[name], *relative)

        ways = {name: lambda name=name: pack(name) for name in commands}
        self.runs = bench.compare(repetitions, ways, fills_memory=True)

    def speed(self, name, other) -> float:
        """In bytes a second."""
        rates = [self.bytes[each] / median_seconds(self.runs[each]) for each in (name, other)]
        return rates[0] / rates[1]

    def size(self, name, other) -> float:
        return total_size(self.archives[name]) / total_size(self.archives[other])

    def memory(self, name, threads: int) -> float:
        """The share of the goal."""
        return peak_memory(self.runs[name]) / ((16 + 4 * threads) * MIB)

    def elsewhere(self, threads: int) -> float:
        """The share of all threads' time that is not deflating and verifying: time in the system,
        for reading and writing, and time without a processor, waiting for each other or for the
        disk. All time in user mode counts as deflating and verifying; almost nothing else is done
        there."""
        told = [run.told for run in self.runs[threads]]
        return statistics.median(1 - each.user / (threads * each.seconds) for each in told)


def measure_many_files(bench):
    files = bench.view_files
    commands = {n: (bench.driver, "pack", "--threads", n) for n in THREADS} | {"zip": ZIP}
    many = Packings(bench, bench.sizes.repetitions, commands, dict.fromkeys(commands, files))
    check_archive(many.archives[1], READERS[:1])
    if not all(filecmp.cmp(many.archives[1], many.archives[n], shallow=False) for n in THREADS):
        raise RuntimeError("the archive depends on the number of threads")
    # 7z takes long, although it may use all cores as we do: give it the files of one design only.
    few = [file for file in files if file.parent == files[0].parent]
    commands = {"own": (bench.driver, "pack"), "7z": SEVEN}
    seven = Packings(bench, bench.sizes.repetitions, commands, dict.fromkeys(commands, few))
    speed, size = many.speed(2, "zip"), many.size(2, "zip")
    yield Row(
        f"packing {total_size(*files) / 1e9:.2f} GB in {len(files)} view files, two threads",
        f"zip -6; 7z a -tzip on {total_size(*few) / 1e9:.2f} GB of them",
        f"at least {GOAL_SPEED} times as fast as zip, at most {GOAL_SIZE} of its size",
        f"{speed:.2f} times zip, {seven.speed('own', '7z'):.2f} times 7z; archive {size:.3f} of "
        f"zip's, {seven.size('own', '7z'):.3f} of 7z's",
        [GOAL_SPEED / speed, size / GOAL_SIZE],
    )
    speed = many.speed(1, "zip")
    goal = f"at least {GOAL_ONE_THREAD} times as fast"
    yield Row("packing, one thread", "zip -6", goal, f"{speed:.2f}", [GOAL_ONE_THREAD / speed])
    curve = {threads: many.speed(threads, 1) for threads in THREADS}
    peaks = ", ".join(f"{peak_memory(many.runs[threads]) / MIB:.1f}" for threads in THREADS)
    yield Row(
        f"packing, {', '.join(map(str, THREADS))} threads on {os.cpu_count()} cores",
        "one thread",
        f"two at least {GOAL_TWO_THREADS} times as fast; {GOAL_MEMORY}",
        f"{', '.join(f'{times:.2f}' for times in curve.values())} times; {peaks} MiB",
        [GOAL_TWO_THREADS / curve[2], *(many.memory(threads, threads) for threads in THREADS)],
        curve,
    )
    elsewhere = {n: many.elsewhere(n) for n in THREADS if n <= os.cpu_count()}
    yield Row(
        "packing, reading, writing and waiting",
        "the time of all threads",
        f"under {GOAL_ELSEWHERE:.0%}",
        ", ".join(f"{share:.1%} of {threads}" for threads, share in elsewhere.items()),
        [max(elsewhere.values()) / GOAL_ELSEWHERE],
    )


def measure_large_file(bench):
    """The same text in one file and in many: only the size of the files differs."""
    large = bench.write_text(bench.scratch / "large.txt", bench.sizes.large_bytes)
    commands = dict.fromkeys(("many", "one"), (bench.driver, "pack", "--threads", 2))
    files = {"many": bench.view_files, "one": [large]}
    packings = Packings(bench, (bench.sizes.repetitions + 1) // 2, commands, files)
    check_archive(packings.archives["one"], READERS)
    remove(large, *packings.archives.values())
    ratio = packings.speed("one", "many")
    yield Row(
        f"packing a file of {packings.bytes['one'] / GIB:.2f} GiB, two threads",
        f"the same text in {len(bench.view_files)} files",
        f"at least {GOAL_LARGE_FILE} of the bytes a second; {GOAL_MEMORY}",
        f"{ratio:.2f} of them; {peak_memory(packings.runs['one']) / MIB:.1f} MiB; archive read "
        "by unzip, 7z, bsdtar and Python",
        [GOAL_LARGE_FILE / ratio, packings.memory("one", 2)],
    )


def read_position(process: int, name: str) -> int:
    """The process's position in its open file of that name; 0 if there is none."""
    try:
        for descriptor in Path(f"/proc/{process}/fd").iterdir():
            if descriptor.resolve().name == name:
                told = Path(f"/proc/{process}/fdinfo/{descriptor.name}").read_text()
                return int(told.split()[1])
    except FileNotFoundError:  # closed meanwhile
        pass
    return 0


def interrupted_seconds(command, extracta, place: int) -> float:
    """The time from SIGINT, sent after a part of a large view is packed, to the end of the run."""
    environment = {**os.environ, "VELTAR_EXTRACTA_PATHOVERRIDE": str(extracta)}
    with subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL) as run:
        while run.poll() is None and read_position(run.pid, "diestack.txt") < place:
            time.sleep(0.002)
        begin = time.monotonic()
        run.send_signal(signal.SIGINT)
        code = run.wait()
        seconds = time.monotonic() - begin
    if code != -signal.SIGINT:
        raise RuntimeError(f"VelExtracta was not packing any more: it ended with {code}")
    return seconds


def measure_interruption(bench):
    size = bench.sizes.interrupted_bytes
    large = bench.write_text(bench.scratch / "large.txt", size)
    extracta = bench.scratch / "extracta"
    extracta.write_text(
        f'#!/bin/sh\n"{bench.program("extracta-standin")}" "$@" || exit\n'
        f'for last; do :; done\ncat "{large}" > "$last"\n'
    )
    extracta.chmod(0o755)
    design = bench.make_design(records=1000)
    command = [bench.program("VelExtracta"), "-z", "-cell", design, bench.scratch / "out.vlx"]
    chosen = random.Random(1)
    # Late enough for the checks before the packing, and early enough before its end.
    places = [chosen.randint(MIB, size // 2) for _ in range(INTERRUPTIONS)]
    seconds = [interrupted_seconds(command, extracta, place) for place in places]
    begin = time.monotonic()
    remove(large)  # as the run removes the view
    removal = time.monotonic() - begin
    yield Row(
        f"interruption while packing a file of {size / GIB:.3g} GiB",
        "SIGINT to the end of the process",
        f"under {GOAL_INTERRUPTION} s",
        f"{max(seconds):.3f} s at most of {INTERRUPTIONS}, median {statistics.median(seconds):.3f}; "
        f"the removal of such a file alone {removal:.3f} s",
        [max(seconds) / GOAL_INTERRUPTION],
    )
