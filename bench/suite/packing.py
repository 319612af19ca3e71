"""Packing a gigabyte of view files, beside the packing programs at hand."""

from suite import inputs
from suite.measure import interleaved, median_ratio, median_seconds
from suite.table import Row, at_least, at_most

GOAL_SPEED = 2.4
GOAL_SIZE = 1.0  # of zip's archive
PACKERS = {
    "own": ["bench-pack"],
    "zip": ["zip", "-6", "-q"],
    "7z": ["7z", "a", "-tzip", "-mmt=1", "-bso0", "-bsp0"],
}


class Comparison:
    """The own packing of the files beside that of another program."""

    def __init__(self, bench, other: str, files):
        self.bench = bench
        # 7z keeps no folders of absolute paths, and the designs have files of the same names.
        self.files = [file.relative_to(bench.scratch) for file in files]
        self.bytes = inputs.total_size(files)
        self.own, self.other = interleaved(
            bench.sizes.repetitions,
            lambda: self.pack("own"),
            lambda: self.pack(other),
        )
        self.sizes = [self.archive(name).stat().st_size for name in ("own", other)]
        inputs.check_archive(self.archive("own"))

    def archive(self, name: str):
        return self.bench.scratch / f"{name}.zip"

    def pack(self, name: str):
        self.bench.remove(self.archive(name))  # zip and 7z would add to it
        program, *options = PACKERS[name]
        find = self.bench.program if name == "own" else self.bench.installed
        return self.bench.run(
            *(find(program), *options, self.archive(name), *self.files),
            directory=self.bench.scratch,
        )

    @property
    def speed(self) -> float:
        return median_ratio(self.other, self.own)

    @property
    def size(self) -> float:
        return self.sizes[0] / self.sizes[1]

    def figures(self) -> dict:
        return {
            "bytes": self.bytes,
            "files": len(self.files),
            "archive_bytes": dict(zip(("own", "other"), self.sizes)),
            "median_seconds": {
                "own": median_seconds(self.own),
                "other": median_seconds(self.other),
            },
            "seconds": {
                "own": [sample.seconds for sample in self.own],
                "other": [sample.seconds for sample in self.other],
            },
            "own_peak_memory_bytes": max(sample.peak_memory for sample in self.own),
        }


def measure(bench):
    files = inputs.view_files(bench, bench.sizes.packing_bytes)
    zipped = Comparison(bench, "zip", files)
    # 7z takes minutes for a gigabyte: one design is enough.
    seven = Comparison(bench, "7z", [file for file in files if file.parent == files[0].parent])
    return [
        Row(
            what=f"packing {zipped.bytes / 1e9:.2f} GB of view files",
            against=f"zip -6; 7z a -tzip -mmt=1 on {seven.bytes / 1e9:.2f} GB of them",
            goal=f"at least {GOAL_SPEED} times as fast as zip, archive no larger",
            measured=f"{zipped.speed:.2f} times zip, {seven.speed:.2f} times 7z; archive "
            f"{zipped.size:.3f} of zip's, {seven.size:.3f} of 7z's",
            used=max(at_least(zipped.speed, GOAL_SPEED), at_most(zipped.size, GOAL_SIZE)),
            figures={"zip": zipped.figures(), "7z": seven.figures()},
        )
    ]
