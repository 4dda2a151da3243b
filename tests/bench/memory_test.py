"""Usage: memory_test.py BENCH_FOLDER"""

import os
import pathlib
import struct
import sys
import unittest

sys.path.insert(0, sys.argv.pop(1))
import memory


class Memory(unittest.TestCase):
    def test_reads_the_length_of_a_frame_from_its_header(self):
        header = struct.pack("<16I", 1, 0x01020304, 8000, 640, 480, 1, 2, 640, 480, 1, 1,
                             1920, 1080, 3, 1, 10)
        self.assertEqual(memory.frame_bytes(header), 7142680)

    def test_images_that_are_not_sent_have_no_bytes(self):
        header = struct.pack("<16I", 1, 0, 8000, 640, 480, 0, 0, 640, 480, 0, 0, 640, 480, 0, 0, 10)
        self.assertEqual(memory.frame_bytes(header), 280)

    @unittest.skipUnless(pathlib.Path("/proc/self/status").exists(), "the system has no /proc")
    def test_sees_memory_that_is_used(self):
        before = memory.resident_bytes(os.getpid())
        block = bytearray(b"\1" * (64 << 20))
        self.assertGreater(memory.resident_bytes(os.getpid()), before + (48 << 20))
        del block


unittest.main()
