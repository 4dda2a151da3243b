"""What qvr-server records validates against the schemas, and broken recordings do not."""

import copy
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

root = pathlib.Path(sys.argv[1])
server = sys.argv[2]


def validator(name):
    schema = json.loads((root / "schemas" / f"{name}.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


description_schema = validator("recording")
frame_schema = validator("recording_frame")


def recorded(folder):
    """A short recording in which frames are missing as well."""
    environment = {**os.environ, "QVR_VOLUMES": str(root / "docs" / "examples" / "simulated")}
    subprocess.run(
        [server, "--camera", "simulated:pace=off,scene=tapping", "--port", "0",
         "--frames", "90", "--record", str(folder), "--record-every", "3"],
        env=environment, check=True, capture_output=True, timeout=100)
    description = json.loads((folder / "recording.json").read_text())
    return description, [json.loads(line) for line in (folder / "frames.jsonl").open()]


def without(document, key):
    return {name: value for name, value in document.items() if name != key}


def changed(document, *path_and_value):
    *path, value = path_and_value
    result = place = copy.deepcopy(document)
    for key in path[:-1]:
        place = place[key]
    place[path[-1]] = value
    return result


with tempfile.TemporaryDirectory() as temporary:
    description, frames = recorded(pathlib.Path(temporary) / "recording")

failures = [f"recording.json: {e.message}" for e in description_schema.iter_errors(description)]
for frame in frames:
    failures += [f"{frame}: {e.message}" for e in frame_schema.iter_errors(frame)]

touched = [frame for frame in frames if frame["touches"]]
gapped = [frame for frame in frames if "dropped" in frame]
if not touched or not gapped:
    sys.exit(f"of {len(frames)} frames {len(touched)} have touches, {len(gapped)} follow a gap")

broken = [(description_schema, without(description, key)) for key in description]
broken += [
    (description_schema, changed(description, "version", 2)),
    (description_schema, changed(description, "depth", "fx", "476")),
    (description_schema, changed(description, "depthToColor", "rotation", [1, 0, 0])),
    (description_schema, changed(description, "touches", "some")),
]
broken += [(frame_schema, without(touched[0], key)) for key in touched[0] if key != "dropped"
           and key != "tracking"]
broken += [
    (frame_schema, without(gapped[0], "tracking")),
    (frame_schema, changed(touched[0], "touches", 0, "slot", 10)),
    (frame_schema, changed(touched[0], "touches", 0, "x", None)),
    (frame_schema, changed(gapped[0], "tracking", "slots", [])),
]
failures += [f"accepted: {document}" for schema, document in broken if schema.is_valid(document)]

print(f"{len(frames)} frames, {len(touched)} with touches, {len(gapped)} behind gaps; "
      f"{len(broken)} broken documents")
if failures:
    sys.exit("\n".join(failures[:20]))
