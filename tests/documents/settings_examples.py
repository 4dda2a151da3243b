"""Every shipped settings document validates against its schema, and broken ones do not."""

import json
import pathlib
import sys

import jsonschema

root = pathlib.Path(sys.argv[1])
schemas = {
    name: json.loads((root / "schemas" / f"{name}.schema.json").read_text())
    for name in ("touch", "touch_projectionMap", "touch_client")
}


def problems(name, document):
    validator = jsonschema.Draft202012Validator(schemas[name])
    found = [f"{list(e.absolute_path)}: {e.message}" for e in validator.iter_errors(document)]
    if name == "touch" and not found and "calibration" in document:
        grid = document["calibration"]
        expected = 3 * grid["sizeX"] * grid["sizeY"] * grid["sizeZ"]
        if len(grid["verts"]) != expected:
            found.append(f"calibration.verts has {len(grid['verts'])} numbers, not {expected}")
    return found


failures = []

examples = sorted((root / "docs" / "examples").rglob("*.json"))
seen = set()
for path in examples:
    name = path.name.removesuffix(".json")
    if name not in schemas:
        failures.append(f"{path}: no schema for this name")
        continue
    seen.add(name)
    failures += [f"{path}: {p}" for p in problems(name, json.loads(path.read_text()))]
failures += [f"no example of {name}.json is shipped" for name in sorted(set(schemas) - seen)]

# A schema that accepts anything would let every example pass.
touch = {"depthResX": 640, "depthResY": 480, "nearClipMeters": 0.2, "farClipMeters": 0.3}
broken = [
    ("touch", {**touch, "depthResX": "640"}),
    ("touch", {key: value for key, value in touch.items() if key != "farClipMeters"}),
    ("touch", {**touch, "streaming": {"colour": True}}),
    ("touch", {**touch, "streaming": {"streamAlignment": "2"}}),
    ("touch", {**touch, "calibration": {"sizeX": 2, "sizeY": 2, "sizeZ": 2, "verts": [0] * 25}}),
    ("touch_client", {"port": 27016}),
    ("touch_client", {"ip": "localhost", "port": "27016"}),
    ("touch_client", {"ip": "localhost", "receiveTimeoutMs": 100}),
    ("touch_client", {"ip": "localhost", "receiveTimeoutMs": "2000"}),
    ("touch_client", {"ip": "localhost", "reconnectReadsHeader": 1}),
    ("touch_projectionMap", {}),
    ("touch_projectionMap", {"map0": {"Xmin": 0}}),
]
failures += [f"the {name} schema accepts {doc}" for name, doc in broken if not problems(name, doc)]
if problems("touch", touch):
    failures.append("the touch schema rejects the smallest document")

print(f"{len(examples)} examples, {len(broken)} broken documents")
if failures:
    sys.exit("\n".join(failures))
