"""Usage: accuracy_test.py BENCH_FOLDER"""

import os
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, sys.argv.pop(1))
import accuracy

# Stands for qvr-evaluate: one frame for each depth image, with its arguments for a picture.
PROGRAM = """#!/bin/sh
echo '{"frames": [{"blobs": [1, 2], "touches": [1], "picture": "'"$*"'"},
                  {"blobs": [], "touches": [], "picture": ""}]}'
"""


class Images(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        program = self.folder / "qvr-evaluate"
        program.write_text(PROGRAM)
        os.chmod(program, 0o755)
        self.images = self.folder / "images"

    def test_are_none_without_the_folder(self):
        self.assertEqual(accuracy.images(self.folder, self.images, "pictures"), [])

    def test_are_counted_under_their_names(self):
        self.images.mkdir()
        for name in ("b.png", "a.png", "color_a.png", "README.md"):
            (self.images / name).touch()
        self.assertEqual(accuracy.images(self.folder, self.images, "pictures"), [
            {"image": "a.png", "blobs": 2, "touches": 1,
             "picture": f"--json - --images {self.images} --pictures pictures"},
            {"image": "b.png", "blobs": 0, "touches": 0, "picture": ""}])


unittest.main()
