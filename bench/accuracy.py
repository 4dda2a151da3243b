"""How well fingers are found: what qvr-evaluate measures on scenes whose truth is known, and what
the detection sees in real depth images, whose truth nobody knows."""

import json
import pathlib
import subprocess
import sys


def _run(programs, *arguments):
    # Tables and progress go to standard error; the progress is for whoever waits.
    finished = subprocess.run([programs / "qvr-evaluate", "--json", "-", *arguments],
                              stdout=subprocess.PIPE,
                              stderr=None if sys.stderr.isatty() else subprocess.DEVNULL)
    if finished.returncode != 0:
        sys.exit("qvr-evaluate failed")
    return json.loads(finished.stdout)


def scenes(programs):
    """The figures of every scene and the goals, as qvr-evaluate writes them."""
    return _run(programs)


def images(programs, folder, pictures):
    """One dictionary for each depth image of `folder`, in the order of the names: its name, the
    number of blobs and touches, and the file under `pictures` that shows them. Nothing where there
    is no such folder."""
    names = sorted(path.name for path in pathlib.Path(folder).glob("*.png")
                   if not path.name.startswith("color_"))
    if not names:
        return []
    frames = _run(programs, "--images", folder, "--pictures", pictures)["frames"]
    return [{"image": name, "blobs": len(frame["blobs"]), "touches": len(frame["touches"]),
             "picture": frame["picture"]}
            for name, frame in zip(names, frames, strict=True)]
