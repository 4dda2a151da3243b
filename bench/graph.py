#!/usr/bin/env python3
"""Draws detection's cost over the size of the image, from a run's results, as SVG."""

import argparse
import json
import math
import pathlib
from xml.sax.saxutils import escape

ROOT = pathlib.Path(__file__).resolve().parent.parent
SIZES = [(320, 240), (640, 480), (1280, 720), (1920, 1080)]
WIDTH, HEIGHT = 760, 460
LEFT, RIGHT, TOP, BOTTOM = 78, 240, 48, 62
# Pattern of the case names, what the line is, colour, dashes.
LINES = [
    ("size/detectFrame/{size}/dense", "whole frame, all in range", "#b3261e", ""),
    ("size/detectFrame/{size}/sparse", "whole frame, fingers in range", "#1565c0", ""),
    ("size/extractBlobs/{size}/sparse", "blobs alone", "#2e7d32", ""),
    ("instead:opencv/detectFrame/{size}/dense", "OpenCV regions, all in range", "#6d4c41", "6 4"),
    ("memoryPass/{size}", "one pass over the pixels", "#616161", "2 3"),
]


def points_of(cases, pattern):
    """(pixels, microseconds) of the sizes that were measured."""
    found = []
    for width, height in SIZES:
        case = cases.get(pattern.format(size=f"{width}x{height}"))
        if case:
            found.append((width * height, case["median"]))
    return found


class Axes:
    """Both logarithmic: a cost that grows with the pixels is a line of slope one."""

    def __init__(self, lines):
        xs = [x for points in lines for x, _ in points]
        ys = [y for points in lines for _, y in points]
        self.x_range = (min(xs) * 0.8, max(xs) * 1.25)
        self.y_range = (10 ** math.floor(math.log10(min(ys))), 10 ** math.ceil(math.log10(max(ys))))

    def x(self, value):
        low, high = map(math.log10, self.x_range)
        return LEFT + (math.log10(value) - low) / (high - low) * (WIDTH - LEFT - RIGHT)

    def y(self, value):
        low, high = map(math.log10, self.y_range)
        return HEIGHT - BOTTOM - (math.log10(value) - low) / (high - low) * (HEIGHT - TOP - BOTTOM)


def text(x, y, content, anchor="middle", size=12, color="#333", more=""):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}" '
            f'fill="{color}"{more}>{escape(content)}</text>')


def line(x1, y1, x2, y2, color):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{color}"/>'


def microseconds(value):
    return f"{value / 1000:g} ms" if value >= 1000 else f"{value:g} µs"


def grid(axes):
    parts = []
    value = axes.y_range[0]
    while value <= axes.y_range[1] * 1.001:
        y = axes.y(value)
        parts.append(line(LEFT, y, WIDTH - RIGHT, y, "#ddd"))
        parts.append(text(LEFT - 8, y + 4, microseconds(value), "end"))
        value *= 10
    for width, height in SIZES:
        x = axes.x(width * height)
        parts.append(line(x, TOP, x, HEIGHT - BOTTOM, "#eee"))
        parts.append(text(x, HEIGHT - BOTTOM + 18, f"{width}x{height}"))
    return parts


def apart(labels, distance=16):
    """Moves labels (y, ...) down until none covers the one above it."""
    placed = []
    for y, *rest in sorted(labels):
        if placed:
            y = max(y, placed[-1][0] + distance)
        placed.append((y, *rest))
    return placed


def draw(results):
    drawn = [(points_of(results["cases"], pattern), name, color, dashes)
             for pattern, name, color, dashes in LINES]
    drawn = [entry for entry in drawn if entry[0]]
    if not drawn:
        raise ValueError("the results have no case over the size of the image")
    axes = Axes([points for points, *_ in drawn])
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
        f'font-family="sans-serif">',
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
        text(LEFT, 26, "Cost of a depth frame over its size", "start", 16, "#111"),
        *grid(axes),
    ]
    labels = []
    for points, name, color, dashes in drawn:
        path = " ".join(f"{axes.x(x):.1f},{axes.y(y):.1f}" for x, y in points)
        dashed = f' stroke-dasharray="{dashes}"' if dashes else ""
        parts.append(f'<polyline points="{path}" fill="none" stroke="{color}" '
                     f'stroke-width="2"{dashed}/>')
        parts += [f'<circle cx="{axes.x(x):.1f}" cy="{axes.y(y):.1f}" r="3" fill="{color}"/>'
                  for x, y in points]
        labels.append((axes.y(points[-1][1]), name, color))
    parts += [text(WIDTH - RIGHT + 10, y + 4, name, "start", 12, color)
              for y, name, color in apart(labels)]
    about = results["about"]
    parts.append(text(LEFT, HEIGHT - 14, f"{about.get('machine', '')}; {about.get('date', '')}",
                      "start", 11, "#666"))
    return "\n".join([*parts, "</svg>"]) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path, nargs="?",
                        default=ROOT / "build/bench/results.json")
    parser.add_argument("--out", type=pathlib.Path,
                        default=ROOT / "docs/images/cost-over-size.svg")
    arguments = parser.parse_args()
    arguments.out.write_text(draw(json.loads(arguments.results.read_text())))


if __name__ == "__main__":
    main()
