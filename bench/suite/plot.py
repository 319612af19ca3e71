"""The result as a drawing: how much of each goal is used, and the curve of the default run."""

from html import escape
from pathlib import Path

WIDTH = 860
NAMES = 380  # width of the column of names
LINE = 26
TOP = 50
CURVE_HEIGHT = 230
MOST = 1.5  # goals; longer bars are cut off
MET, MISSED, INK, GRID = "#2f7d5b", "#b5482f", "#222222", "#cccccc"


def text(x, y, words, anchor="start", size=13) -> str:
    return (
        f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" '
        f'fill="{INK}">{escape(words)}</text>'
    )


def line(x1, y1, x2, y2, colour=GRID) -> str:
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}"/>'


def bars(rows) -> list[str]:
    scale = (WIDTH - NAMES - 80) / MOST
    bottom = TOP + LINE * len(rows)
    parts = [text(20, 24, "Share of the goal that is used (shorter is better)", size=15)]
    for mark in (0, 0.5, 1):
        x = NAMES + mark * scale
        parts.append(line(x, TOP - 8, x, bottom, INK if mark == 1 else GRID))
        parts.append(text(x, TOP - 12, "goal" if mark == 1 else f"{mark:g}", "middle", 11))
    for number, row in enumerate(rows):
        y = TOP + LINE * number
        length = min(max(row.used, 0), MOST) * scale
        colour = MET if row.used <= 1 else MISSED
        parts.append(text(20, y + 17, row.what))
        parts.append(
            f'<rect x="{NAMES}" y="{y + 4}" width="{length:.1f}" height="{LINE - 8}" '
            f'fill="{colour}"/>'
        )
        parts.append(text(WIDTH - 20, y + 17, f"{row.used:.2f}", "end", 11))
    return parts


def curve(rows, top) -> list[str]:
    """Time over the limit, as a share of the single-process run."""
    points = [(row.figures["limit"], row.figures["ratio_to_single"]) for row in rows]
    highest = max(1.0, *(ratio for _, ratio in points)) * 1.1
    left, bottom = 80, top + CURVE_HEIGHT - 50
    step = (WIDTH - left - 80) / len(points)

    def place(index, ratio):
        return left + step * (index + 0.5), bottom - ratio / highest * (CURVE_HEIGHT - 90)

    parts = [text(20, top + 14, "Default run over the limit of processes, against one", size=15)]
    _, single = place(0, 1)
    parts.append(line(left, single, WIDTH - 80, single, INK))
    parts.append(text(left - 8, single + 4, "1.00", "end", 11))
    parts.append(line(left, bottom, WIDTH - 80, bottom))
    places = [place(index, ratio) for index, (_, ratio) in enumerate(points)]
    joined = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
    parts.append(f'<polyline points="{joined}" fill="none" stroke="{MET}" stroke-width="2"/>')
    for (limit, ratio), (x, y) in zip(points, places):
        parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4" fill="{MET}"/>')
        away_from_single = y - 10 if ratio > 1 else y + 18
        parts.append(text(x, away_from_single, f"{ratio:.2f}", "middle", 11))
        parts.append(text(x, bottom + 18, f"limit {limit}", "middle", 11))
    return parts


def write(path: Path, rows) -> None:
    judged = [row for row in rows if row.used is not None]
    curved = [row for row in rows if "ratio_to_single" in row.figures]
    height = TOP + LINE * len(judged) + 20
    parts = bars(judged)
    if curved:
        parts += curve(curved, height + 10)
        height += CURVE_HEIGHT
    path.write_text(
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
        f'viewBox="0 0 {WIDTH} {height}" font-family="sans-serif">\n'
        f'<rect width="{WIDTH}" height="{height}" fill="white"/>\n'
        + "\n".join(parts)
        + "\n</svg>\n"
    )
