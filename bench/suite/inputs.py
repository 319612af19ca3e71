"""View files as a run leaves them: made designs, taken apart by the stand-in extractor."""

import zipfile
from pathlib import Path

COPY_SIZE = 1 << 24


def make_design(bench, name: str, records: int, seed: int = 1, nets: int = 200) -> Path:
    design = bench.scratch / name
    bench.run(
        bench.program("make-design"), "--records", records, "--nets", nets, "--seed", seed, design
    )
    return design


def standin_environment(bench) -> dict:
    return {"VELTAR_EXTRACTA_PATHOVERRIDE": str(bench.program("extracta-standin"))}


def extract_views(bench, design: Path, target: Path) -> list[Path]:
    """All files that a default run on the design leaves for packing."""
    target.mkdir()
    environment = standin_environment(bench) | threads(bench, 4)
    bench.run(bench.program("VelExtracta"), design, target, environment=environment)
    return sorted(target.iterdir())


def threads(bench, hardware_threads: int) -> dict:
    """Lets the program see a machine with that many hardware threads."""
    return {
        "LD_PRELOAD": str(bench.program("bench_hardware_threads.so")),
        "HARDWARE_THREADS": str(hardware_threads),
    }


def total_size(files) -> int:
    return sum(file.stat().st_size for file in files)


def view_files(bench, size: int) -> list[Path]:
    """The view files of as many designs as make up the size."""
    files: list[Path] = []
    seed = 0
    while total_size(files) < size:
        seed += 1
        design = make_design(bench, "packed.mcm", bench.sizes.packing_records, seed)
        files += extract_views(bench, design, bench.scratch / f"views{seed}")
        bench.remove(design)
    return files


def write_view_file(path: Path, header: bytes, records: bytes, size: int) -> None:
    """The header, then the records over and over, whole lines only, until the size is reached."""
    with path.open("wb", buffering=COPY_SIZE) as file:
        file.write(header)
        left = size - len(header)
        while left > 0:
            part = records
            if left < len(records):
                part = records[: records.find(b"\r\n", left - 1) + 2]
            file.write(part)
            left -= len(part)


def split_view_file(path: Path) -> tuple[bytes, bytes]:
    """The two header lines and the records of a view file."""
    content = path.read_bytes()
    records = content.index(b"\r\n", content.index(b"\r\n") + 2) + 2
    return content[:records], content[records:]


def check_archive(path: Path) -> None:
    """Unpacks everything to nowhere, with checksums: only a good archive counts."""
    with zipfile.ZipFile(path) as archive:
        damaged = archive.testzip()
    if damaged is not None:
        raise zipfile.BadZipFile(f"{path}: {damaged} is damaged")
