"""The rows of the result and the ways in which they are shown."""

import dataclasses
import json
from pathlib import Path


@dataclasses.dataclass
class Row:
    what: str
    against: str
    goal: str
    measured: str
    used: float | None  # share of what the goal allows: up to 1 is met; None where there is no goal
    figures: dict  # everything that was measured, with units in the names

    @property
    def verdict(self) -> str:
        if self.used is None:
            return ""
        return "met" if self.used <= 1 else "MISSED"


def at_most(value: float, bound: float) -> float:
    return value / bound


def at_least(value: float, bound: float) -> float:
    return bound / value


HEADINGS = ("what", "against", "goal", "measured", "verdict")


def cells_of(row: Row) -> tuple[str, ...]:
    return row.what, row.against, row.goal, row.measured, row.verdict


def as_text(rows) -> str:
    cells = [HEADINGS, *map(cells_of, rows)]
    widths = [max(len(line[column]) for line in cells) for column in range(len(HEADINGS))]
    lines = ["  ".join(cell.ljust(width) for cell, width in zip(line, widths)) for line in cells]
    lines.insert(1, "  ".join("-" * width for width in widths))
    return "\n".join(line.rstrip() for line in lines)


def as_markdown(rows) -> str:
    """For the documentation."""
    lines = [HEADINGS, ["---"] * len(HEADINGS), *map(cells_of, rows)]
    return "".join(f"| {' | '.join(cells)} |\n" for cells in lines)


def write_json(path: Path, machine: dict, sizes: dict, rows, micro) -> None:
    result = {
        "machine": machine,
        "sizes": sizes,
        "rows": [{**dataclasses.asdict(row), "verdict": row.verdict} for row in rows],
        "micro": micro,
    }
    path.write_text(json.dumps(result, indent=2) + "\n")
