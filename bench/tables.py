"""The Markdown tables of a run's results."""

import pathlib
import re

from goals import goals
from results import changes, figures, ratio

SIZES = ["320x240", "640x480", "1280x720", "1920x1080"]
STEPS = ["processFrame", "extractBlobs", "detectFrame"]
LIBRARIES = {"opencv": "OpenCV", "libyuv": "libyuv"}
GROUPS = ("size/", "blobs/", "grid/", "clients/", "instead:")


def table(header, rows):
    """Columns after the first are numbers, unless their title begins with a quote mark."""
    titles = [title.lstrip("'") for title in header]
    rules = ["---" if i == 0 or header[i].startswith("'") else "---:" for i in range(len(header))]
    lines = [titles, rules, *rows]
    return "\n".join(
        ("|" + "|".join(line) + "|") if line is rules else ("| " + " | ".join(line) + " |")
        for line in lines)


def number(value, unit="", digits=1):
    return "" if value is None else f"{value:,.{digits}f}{unit}"


def times(value):
    return number(value, digits=2)


def median(cases, name):
    return cases[name]["median"] if name in cases else None


def about(results):
    return "\n".join(f"- {name}: {value}" for name, value in results["about"].items())


def steps_beside_limits(results):
    cases = results["cases"]
    own = [name for name in cases if not name.startswith(GROUPS)]
    limit_of = {name: cases[name]["limit"] for name in own}
    # Each limit is followed by the cases it belongs to.
    own.sort(key=lambda name: (limit_of[name] or name, limit_of[name] is not None, name))
    rows = [[name, number(cases[name]["median"], " us"), f"{cases[name]['spread']:.0%}",
             limit_of[name] or "", times(ratio(cases, name, limit_of[name])),
             cases[name]["replaces"] or "", times(ratio(cases, cases[name]["replaces"], name))]
            for name in own]
    return table(["case", "median", "spread", "'limit", "times the limit", "'replaces",
                  "times faster"], rows)


def instead(results):
    cases = results["cases"]
    rows = []
    for name in sorted(cases):
        match = re.fullmatch(r"instead:(\w+)/(.+)", name)
        if match and match[2] in cases:
            library, ours = match.groups()
            rows.append([ours, number(median(cases, ours), " us"),
                         LIBRARIES.get(library, library), number(median(cases, name), " us"),
                         times(ratio(cases, name, ours))])
    return table(["step", "ours", "'instead", "theirs", "times ours"], rows)


def image_sizes(results):
    cases = results["cases"]
    rows = []
    for scene in ("sparse", "dense"):
        for size in SIZES:
            names = [f"size/{step}/{size}/{scene}" for step in STEPS]
            if not any(name in cases for name in names):
                continue
            width, height = map(int, size.split("x"))
            whole = median(cases, names[-1])
            rows.append([f"{size}, {scene}", *(number(median(cases, name), " us")
                                               for name in names),
                         times(whole and whole * 1000 / (width * height)),
                         times(ratio(cases, names[-1], f"memoryPass/{size}"))])
    return table(["image", *STEPS, "ns a pixel", "times memoryPass"], rows)


def numbered(cases, pattern):
    """(number, name) of the cases that match, by number."""
    found = []
    for name in cases:
        match = re.fullmatch(pattern, name)
        if match:
            found.append((int(match[1]), name))
    return sorted(found)


def fingertips(results):
    cases = results["cases"]
    rows = []
    for count, _ in numbered(cases, r"blobs/(\d+)/detectFrame"):
        rows.append([str(count), *(number(median(cases, f"blobs/{count}/{step}"), " us")
                                   for step in STEPS)])
    return table(["fingertips", *STEPS], rows)


def grids(results):
    cases = results["cases"]
    rows = []
    for count, near in numbered(cases, r"grid/(\d+)/nearbyPoints"):
        far = f"grid/{count}/scatteredPoints"
        # A thousand points a step: microseconds a step are nanoseconds a point.
        rows.append([f"{count} x {count} x {count}", number(median(cases, near), " ns"),
                     times(ratio(cases, near, "grid/2/nearbyPoints")),
                     number(median(cases, far), " ns"),
                     times(ratio(cases, far, "grid/2/scatteredPoints"))])
    return table(["vertices", "a point, nearby ones", "times 2 x 2 x 2", "scattered ones",
                  "times 2 x 2 x 2"], rows)


def clients(results):
    cases = results["cases"]
    rows = []
    for count, touches in numbered(cases, r"clients/(\d+)/touches"):
        row = [str(count)]
        for name in (touches, f"clients/{count}/allStreams"):
            value = median(cases, name)
            row += [number(value, " us"), number(value and value / count, " us")]
        rows.append(row)
    return table(["clients", "touches only", "a client", "all streams", "a client"], rows)


def latency(results):
    rows = [[f"{row['streams']}, beside {row['beside']}", number(row["frameBytes"], digits=0),
             number(row["p50"], " ms", 2), number(row["p99"], " ms", 2),
             number(row["texturesP50"], " ms", 2), number(row["texturesP99"], " ms", 2),
             number(row["framesPerSecond"]), number(row["frames"], digits=0)]
            for row in results.get("latency", [])]
    return table(["streams", "bytes a frame", "touches, p50", "p99", "textures, p50", "p99",
                  "frames a second", "frames"], rows)


def memory(results):
    def megabytes(value):
        return number(value / 1e6, " MB", 2)
    rows = [[row["streams"], megabytes(row["frameBytes"]), megabytes(row["server1"]),
             megabytes(row["server16"]), megabytes((row["server16"] - row["server1"]) / (16 - 1)),
             megabytes(row["host"])]
            for row in results.get("memory", [])]
    return table(["streams", "a frame", "server, 1 client", "server, 16 clients",
                  "a further client", "host"], rows)


def part(figures, name, digits=2):
    return number(figures and figures[name], digits=digits)


def accuracy(results):
    rows = []
    for scene in results.get("accuracy", {}).get("scenes", []):
        first, error, lag = scene["firstReportFrame"], scene["errorMm"], scene["lag"]
        before = scene["errorBeforeCalibrationMm"]
        rate = scene["detectionRate"]
        rows.append([scene["name"], number(scene["frames"], digits=0),
                     number(scene["touchDowns"], digits=0),
                     number(None if rate is None else 100 * rate, " %"),
                     *(number(scene[name], digits=0)
                       for name in ("missed", "broken", "splits", "identitySwitches")),
                     times(scene["falseTouchesPerMinute"]), part(first, "mean"),
                     part(before, "mean"), part(before, "p95"), part(error, "mean"),
                     part(error, "p95"), number(scene["jitterMm"], digits=3), part(lag, "ms", 1)])
    return table(["scene", "frames", "touch-downs", "detected", "missed", "broken", "split",
                  "id switches", "false a minute", "first report on frame", "mm before, mean",
                  "p95", "mm after, mean", "p95", "jitter, mm", "lag, ms"], rows)


def accuracy_goals(results):
    rows = []
    for goal in results.get("accuracy", {}).get("goals", []):
        if goal["figure"] is None:
            continue
        at_least = "atLeast" in goal
        limit = goal["atLeast"] if at_least else goal["atMost"]
        rows.append([f"{goal['name']}, {goal['unit']}", times(goal["figure"]),
                     f"{'at least' if at_least else 'at most'} {limit:g}",
                     "yes" if goal["met"] else "no", ", ".join(goal["notMetBy"])])
    return table(["figure", "measured", "goal", "'met", "'not by"], rows)


def images(results):
    rows = [[row["image"], str(row["blobs"]), str(row["touches"]),
             pathlib.PurePath(row["picture"]).name] for row in results.get("images", [])]
    return table(["depth image", "blobs", "touches", "'picture"], rows)


def goal_table(results):
    def reached(value, at_most, limit):
        return "yes" if (value <= limit if at_most else value >= limit) else "no"
    rows = [[title, times(value), f"{'at most' if at_most else 'at least'} {goal:g}",
             reached(value, at_most, goal), "" if aim is None else f"{aim:g}",
             "" if aim is None else reached(value, at_most, aim)]
            for title, value, at_most, goal, aim in goals(results)]
    return table(["figure", "measured", "goal", "'met", "aim", "'reached"], rows)


SECTIONS = [
    ("Goals", goal_table),
    ("Steps beside their limits", steps_beside_limits),
    ("What people would use instead", instead),
    ("Over the size of the image", image_sizes),
    ("Over the number of fingertips", fingertips),
    ("Over the calibration grid", grids),
    ("Over the number of clients", clients),
    ("From the camera to the host", latency),
    ("Memory", memory),
    ("How well fingers are found", accuracy),
    ("Goals of finding fingers", accuracy_goals),
    ("Real depth images", images),
]


def markdown(results):
    """All tables that have rows, each under a heading of the third level."""
    parts = [about(results)]
    for title, build in SECTIONS:
        text = build(results)
        if text.count("\n") > 1:
            parts += [f"### {title}", text]
    return "\n\n".join(parts) + "\n"


def comparison(before, after):
    def describe(change, noise):
        if abs(change) <= noise:
            return "within the noise"
        return "worse" if change > 0 else "better"
    rows = [[name, times(old), times(new), unit, f"{change:+.0%}", f"{noise:.0%}",
             describe(change, noise)]
            for name, old, new, unit, change, noise in changes(before, after)]
    parts = [table(["figure", "before", "now", "'unit", "change", "noise", "'verdict"], rows)]
    old, new = figures(before).keys(), figures(after).keys()
    compared = {row[0] for row in rows}
    for title, names in (("Only before", old - new), ("Only now", new - old),
                         ("Not beside the same limit in both", (old & new) - compared)):
        if names:
            parts.append(f"{title}: {', '.join(sorted(names))}")
    return "\n\n".join(parts) + "\n"
