"""The machine of the measurements, and the forms of the result."""

import json
import os
import platform
import subprocess
from pathlib import Path

from matplotlib.figure import Figure
from tabulate import tabulate

COMPARED = ["zip", "p7zip-full", "mawk", "coreutils", "findutils", "libdeflate0"]


def table(rows, style: str) -> str:
    headings = ["what", "against", "goal", "measured"]
    headings += ["verdict"] * any(row.verdict for row in rows)
    cells = [[getattr(row, heading) for heading in headings] for row in rows]
    return tabulate(cells, headings, tablefmt=style, disable_numparse=True)


def describe_machine() -> dict:
    cpuinfo = Path("/proc/cpuinfo").read_text()
    models = [line.partition(": ")[2] for line in cpuinfo.splitlines() if "model name" in line]
    query = ["dpkg-query", "-W", "-f", "${Package} ${Version}, ", *COMPARED]
    return {
        "processor": models[0] if models else platform.machine(),
        "cores": os.cpu_count(),
        "GiB": round(os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / (1 << 30)),
        "virtual": " hypervisor" in cpuinfo,
        "system": f"{platform.system()} {platform.release()}",
        "load before": os.getloadavg()[0],
        "packages": subprocess.run(query, stdout=subprocess.PIPE).stdout.decode().rstrip(", "),
    }


def draw_goals(axes, rows) -> None:
    shares = [max(row.used) for row in rows]
    colours = ["seagreen" if share <= 1 else "firebrick" for share in shares]
    axes.bar_label(axes.barh([row.what for row in rows], shares, color=colours), fmt="%.2f")
    axes.set_xlim(0, 1.5)  # longer bars are cut off
    axes.axvline(1, color="black")
    axes.invert_yaxis()
    axes.set_title("Share of the goal that is used (shorter is better)")


def draw_curve(axes, row) -> None:
    labels, values = [str(x) for x in row.curve], list(row.curve.values())
    axes.plot(labels, values, marker="o", color="seagreen")
    for label, value in zip(labels, values):
        axes.annotate(f"{value:.2f}", (label, value), textcoords="offset points", xytext=(4, 6))
    axes.axhline(1, color="black")
    axes.set_ylim(0, 1.2 * max(1, *values))
    axes.set_title(f"{row.what}, against {row.against}")


def draw(rows, path: Path) -> None:
    """One panel for all goals, and one for each curve."""
    judged = [row for row in rows if row.used]
    curves = [row for row in rows if row.curve]
    heights = [0.4 * len(judged) + 1] * bool(judged) + [3] * len(curves)
    path.unlink(missing_ok=True)
    if not heights:
        return
    figure = Figure(figsize=(10, sum(heights)), layout="constrained")
    panels = list(figure.subplots(len(heights), squeeze=False, height_ratios=heights)[:, 0])
    if judged:
        draw_goals(panels.pop(0), judged)
    for panel, row in zip(panels, curves):
        draw_curve(panel, row)
    figure.savefig(path)


def write(directory: Path, machine: dict, sizes, rows, runs) -> None:
    judged = [{**vars(row), "verdict": row.verdict} for row in rows]
    result = {"machine": machine, "sizes": sizes, "rows": judged, "runs": runs}
    text = json.dumps(result, indent=1, default=vars)
    (directory / "result.json").write_text(text + "\n")
    (directory / "result.md").write_text(table(rows, "github") + "\n")
    draw(rows, directory / "result.svg")
