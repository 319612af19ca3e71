"""The trace that the stand-in extractor leaves of its processes."""

from pathlib import Path


def intervals(path: Path) -> list[tuple[int, int]]:
    """Begin and end of every process, in nanoseconds of the monotonic clock."""
    begins: dict[str, int] = {}
    found = []
    for line in path.read_text().splitlines():
        event, _, rest = line.partition(" ")
        _name, process, time = rest.rsplit(" ", 2)
        if event == "start":
            begins[process] = int(time)
        elif event == "end":
            found.append((begins.pop(process), int(time)))
    if begins:
        raise ValueError(f"{len(begins)} processes of the trace have no end")
    return found
