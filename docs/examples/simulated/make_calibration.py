#!/usr/bin/env python3
"""Writes the calibration of the simulated camera into QVR_calibration beside this file.

A real display is calibrated by measuring; the simulated one is known, so its files follow from
the figures in dependencies/realsense/src/simulated/scene_geometry.cpp. A test holds them to the
scene.

touch.json carries a pixel (column, row, depth units) into camera space: millimetres to the right
of, below and in front of the camera. touch_projectionMap.json carries that into display space:
millimetres right of and below the display's upper left corner, and in front of its plane.
"""

import json
import math
import pathlib

WIDTH, HEIGHT = 640, 480
FOCAL = 476.0
CENTER = (314.25, 242.5)
UNITS_PER_MM = 8.0
NEAR_M, FAR_M = 0.2, 0.28
GRID = (5, 4, 3)

DISPLAY_CENTER = (3.0, -4.0, 430.0)
DISPLAY_SIZE = (340.0, 212.5)
DISPLAY_TILT = (2.4, -1.7, 0.8)  # degrees about x, then y, then z

BOX = {"X": (-200.0, 200.0), "Y": (-150.0, 150.0), "Z": (NEAR_M * 1000, FAR_M * 1000)}
CORNERS = ("xyz", "Xyz", "XYz", "xYz", "xYZ", "XYZ", "XyZ", "xyZ")


def display_axes():
    ax, ay, az = (math.radians(angle) for angle in DISPLAY_TILT)
    cx, sx, cy, sy = math.cos(ax), math.sin(ax), math.cos(ay), math.sin(ay)
    cz, sz = math.cos(az), math.sin(az)
    right = (cz * cy, sz * cy, -sy)
    down = (cz * sy * sx - sz * cx, sz * sy * sx + cz * cx, cy * sx)
    away = (cz * sy * cx + sz * sx, sz * sy * cx - cz * sx, cy * cx)
    return right, down, tuple(-value for value in away)


def to_display(point):
    axes = display_axes()
    right, down, _ = axes
    origin = [
        DISPLAY_CENTER[i] - right[i] * DISPLAY_SIZE[0] / 2 - down[i] * DISPLAY_SIZE[1] / 2
        for i in range(3)
    ]
    return [sum((point[i] - origin[i]) * axis[i] for i in range(3)) for axis in axes]


def grid_vertices():
    """x fastest, then y, then z."""
    for k in range(GRID[2]):
        z = (NEAR_M + (FAR_M - NEAR_M) * k / (GRID[2] - 1)) * 1000
        for j in range(GRID[1]):
            y = (HEIGHT * j / (GRID[1] - 1) - CENTER[1]) / FOCAL * z
            for i in range(GRID[0]):
                x = (WIDTH * i / (GRID[0] - 1) - CENTER[0]) / FOCAL * z
                yield x, y, z


def touch_document():
    return {
        "colorResX": 640,
        "colorResY": 480,
        "depthResX": WIDTH,
        "depthResY": HEIGHT,
        "nearClipMeters": NEAR_M,
        "farClipMeters": FAR_M,
        "streaming": {
            "color": True,
            "depth": True,
            "processed": True,
            "touch": True,
            "autoClose": True,
            "port": 27016,
            "fps": 60,
            "streamAlignment": 0,
        },
        "touchDetection": {
            "confidenceThreshold": 2,
            "forwardFacing": {
                "maxDiffNear": 45,
                "maxDiffFar": 36,
                "blobLineAssocLimitU": 16,
                "blobLineAssocLimitV": 4,
                "flatnessRadius": 3,
                "flatnessThreshold": 30,
                "biasStrength": 45,
                "minBlobSize": 11,
                "minBlobSpace": 4,
                "allowedBlobNoiseGap": 3,
                "borderClipLeft": 8,
                "borderClipRight": 8,
                "borderClipTop": 8,
                "borderClipBottom": 8,
            },
        },
        "calibration": {
            "sizeX": GRID[0],
            "sizeY": GRID[1],
            "sizeZ": GRID[2],
            "verts": [round(value, 4) for vertex in grid_vertices() for value in vertex],
        },
    }


def projection_document():
    bounds = {}
    for axis, (low, high) in BOX.items():
        bounds[axis + "min"] = low
        bounds[axis + "max"] = high
    corners = {}
    for name in CORNERS:
        point = [BOX[letter.upper()][letter.isupper()] for letter in name]
        corners[name] = dict(zip("xyz", (round(value, 4) for value in to_display(point))))
    return {"map0": {**bounds, "calibration": corners}}


def write(path, document):
    text = json.dumps(document, indent=2)
    # One vertex a line reads better than one number a line.
    head, marker, tail = text.partition('"verts": [')
    if marker:
        numbers, bracket, rest = tail.partition("]")
        values = [value.strip() for value in numbers.split(",")]
        lines = [", ".join(values[i : i + 3]) for i in range(0, len(values), 3)]
        text = head + marker + "\n      " + ",\n      ".join(lines) + "\n    " + bracket + rest
    path.write_text(text + "\n", encoding="utf-8")


def main():
    folder = pathlib.Path(__file__).resolve().parent / "QVR_calibration"
    folder.mkdir(exist_ok=True)
    write(folder / "touch.json", touch_document())
    write(folder / "touch_projectionMap.json", projection_document())
    write(folder / "touch_client.json", {"ip": "127.0.0.1", "port": 27016,
                                         "receiveTimeoutMs": 2000, "reconnectReadsHeader": True})


if __name__ == "__main__":
    main()
