"""What ./dev fuzz reads from its arguments and from libFuzzer's output. Argument: its folder."""

import contextlib
import io
import sys
import unittest

sys.path.insert(0, sys.argv.pop(1))

import fuzz  # noqa: E402

QUIET_RUN = """INFO: Seed: 1
#17\tINITED cov: 778 ft: 1863 corp: 15/3603b exec/s: 0 rss: 44Mb
#354\tNEW    cov: 801 ft: 1999 corp: 60/12Kb lim: 304 exec/s: 88 rss: 51Mb
Done 371 runs in 5 second(s)
stat::number_of_executed_units: 371
stat::average_exec_per_sec:     74
"""

FINDING = """#17\tINITED cov: 778 ft: 1863 corp: 15/3603b exec/s: 0 rss: 44Mb
blobRuns.cpp:20:5: runtime error: index 9 out of bounds
artifact_prefix='x-'; Test unit written to x-crash-0beec7b5
stat::number_of_executed_units: 20
stat::average_exec_per_sec:     0
"""


class ReadRun(unittest.TestCase):
    def test_takes_the_last_coverage_and_the_totals(self):
        self.assertEqual(fuzz.read_run("depthImages", QUIET_RUN),
                         fuzz.Run("depthImages", 371, 74, 801, 1999, 60))

    def test_names_the_input_of_a_finding(self):
        run = fuzz.read_run("depthImages", FINDING)
        self.assertEqual(run.finding, "x-crash-0beec7b5")
        self.assertTrue(run.row().endswith("FINDING"))

    def test_shows_the_report_from_the_line_that_names_the_place(self):
        report = fuzz.REPORT.search(FINDING)
        self.assertTrue(FINDING[report.start():].startswith("blobRuns.cpp:20:5: runtime error"))

    def test_of_a_program_that_does_not_start_is_all_zero(self):
        self.assertEqual(fuzz.read_run("depthImages", ""), fuzz.Run("depthImages", 0, 0, 0, 0, 0))


class Arguments(unittest.TestCase):
    def test_are_all_targets_for_a_minute_unless_said_otherwise(self):
        arguments = fuzz.parse_arguments([])
        self.assertEqual((arguments.target, arguments.seconds), (None, 60))

    def test_may_be_a_target_a_time_or_both(self):
        for words, expected in ((["depthImages"], ("depthImages", 60)),
                                (["5"], (None, 5)),
                                (["depthImages", "600"], ("depthImages", 600))):
            arguments = fuzz.parse_arguments(words)
            self.assertEqual((arguments.target, arguments.seconds), expected)

    def test_of_an_unknown_target_are_refused_with_the_known_ones(self):
        complaint = io.StringIO()
        with contextlib.redirect_stderr(complaint), self.assertRaises(SystemExit):
            fuzz.parse_arguments(["depthimages"])
        self.assertIn("unknown target 'depthimages'", complaint.getvalue())
        self.assertIn("clientStream, depthImages", complaint.getvalue().replace("\n", " "))


if __name__ == "__main__":
    unittest.main()
