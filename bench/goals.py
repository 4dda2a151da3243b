"""The figures that are to be reached, and what a run measured for them.

Each comes with the goal and, where there is one, with the aim beyond it.
"""

import re

from results import figures, ratio

AT_MOST, AT_LEAST = True, False

# A step in one of its forms is to be so many times faster than in the first form.
FASTER = [
    ("processFrame/640x480/dense/sse", 10, 15),
    ("processFrame/640x480/dense/avx2", 18, 30),
    ("processFrame/640x480/dense/avx512", 25, 40),
    ("processFrame/640x480/hand/avx2", 7, 10),
    ("processFrame/640x480/room/avx2", 7, 10),
    ("processFrame/1920x1080/dense/avx2", 15, 21),
    ("findRuns/640x480/hand/avx2", 8, 15),
    ("findRuns/640x480/room/avx2", 8, 15),
    ("findRuns/everyOther/avx2", 0.9, None),
]

# A step may cost so many times its limit.
OF_THE_LIMIT = [
    ("processFrame/640x480/dense/avx2", 10, 7.5),
    ("processFrame/640x480/dense/avx512", 8, 6),
    ("processFrame/640x480/hand/avx2", 5.5, 4),
    ("processFrame/640x480/room/avx2", 5.5, 4),
    ("processFrame/1920x1080/dense/avx2", 5.5, 4.5),
    ("colorToRgba/640x480", 1.0, 0.75),
    ("depthToRgba/640x480", 0.8, 0.65),
    ("maskToRgba/640x480", 0.7, 0.57),
    ("colorToRgba/1920x1080", 1.0, 0.75),
    ("depthToRgba/1920x1080", 0.8, 0.65),
    ("maskToRgba/1920x1080", 0.7, 0.57),
    ("importGrid/64x48x16", 1.5, None),
    ("clientIntake/7142680", 1.11, 1.04),
    ("grid/64/nearbyPoints", 1.2, None),
]

# What people would use instead is to take so many times as long.
OF_OTHERS = [
    ("opencv", "detectFrame/640x480/dense", 5, 7),
    ("opencv", "detectFrame/640x480/sparse", 8, 12),
    ("opencv", "detectFrame/640x480/hand", 8, 12),
    ("opencv", "colorToRgba/640x480", 1, None),
    ("libyuv", "colorToRgba/640x480", 1, None),
    ("opencv", "colorToRgba/1920x1080", 1, None),
    ("libyuv", "colorToRgba/1920x1080", 1, None),
]

MILLISECONDS = [
    ("latency/touches only/beside a busy core/p50", 0.5),
    ("latency/touches only/beside a busy core/p99", 2),
    ("latency/all streams/beside nothing/p50", 4),
    ("latency/all streams, 1920x1080 colour/beside nothing/p50", 4),
]


def goals(results):
    """(title, measured, AT_MOST or AT_LEAST, goal, aim) of those that the run has figures for."""
    cases = results["cases"]
    found = []
    for name, least, aim in FASTER:
        replaced = cases[name]["replaces"] if name in cases else None
        found.append((f"{replaced} over {name}", ratio(cases, replaced, name), AT_LEAST, least,
                      aim))
    for name, most, aim in OF_THE_LIMIT:
        # Before a step has forms, its only one stands for all.
        present = name if name in cases else re.sub("/(avx2|avx512)$", "", name)
        limit = cases[present]["limit"] if present in cases else None
        found.append((f"{present} over {limit}", ratio(cases, present, limit), AT_MOST, most, aim))
    for library, name, least, aim in OF_OTHERS:
        instead = f"instead:{library}/{name}"
        found.append((f"{instead} over ours", ratio(cases, instead, name), AT_LEAST, least, aim))
    measured = figures(results)
    for name, most in MILLISECONDS:
        found.append((f"{name}, ms", measured.get(name, (None,))[0], AT_MOST, most, None))
    return [goal for goal in dict.fromkeys(found) if goal[1] is not None]
