"""The rows of the result: measurements and failures."""

import dataclasses
import textwrap
import traceback


@dataclasses.dataclass
class Row:
    what: str
    against: str
    goal: str
    measured: str
    # Used shares of the goal's limits: the goal is met if none is over 1; empty if there is no goal.
    used: list[float]
    curve: dict[int, float] = dataclasses.field(default_factory=dict)
    failed: bool = False

    @property
    def verdict(self) -> str:
        if self.failed:
            return "FAILED"
        return "" if not self.used else "met" if max(self.used) <= 1 else "MISSED"


def rows_of(part: str, measure, bench):
    """The rows of a part. If an error ends the part, the error becomes its last row.

    >>> def measure(bench):
    ...     yield Row("one", "two", "at most 2", "3", [1.5])
    ...     raise RuntimeError(bench)
    >>> [(row.what, row.measured, row.verdict) for row in rows_of("part", measure, "no disk")]
    [('one', '3', 'MISSED'), ('part', 'RuntimeError: no disk', 'FAILED')]
    """
    try:
        yield from measure(bench)
    except Exception as error:  # any error: the other parts still give their rows
        traceback.print_exc()
        reason = textwrap.shorten(f"{type(error).__name__}: {error}", 200)
        yield Row(part, "", "", reason, [], failed=True)
