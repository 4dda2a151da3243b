"""The figures and the reasons of the coverage report."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import report  # noqa: E402


def entry(name, lines, branches):
    return {"filename": name, "line_covered": lines[0], "line_total": lines[1],
            "branch_covered": branches[0], "branch_total": branches[1]}


def summary(*files):
    total = entry("", [sum(f[k] for f in files) for k in ("line_covered", "line_total")],
                  [sum(f[k] for f in files) for k in ("branch_covered", "branch_total")])
    return dict(total, files=list(files))


class Reasons(unittest.TestCase):
    def test_are_read_by_file(self):
        text = "# why\n\na.cpp: no memory: cannot be had\nb.cpp: another system\n"
        self.assertEqual(report.read_reasons(text), {"a.cpp": "no memory: cannot be had",
                                                     "b.cpp": "another system"})

    def test_have_to_be_given(self):
        for text in ("a.cpp", "a.cpp: ", "a.cpp: once\na.cpp: twice"):
            with self.assertRaises(ValueError):
                report.read_reasons(text)


class Problems(unittest.TestCase):
    def test_are_none_when_all_is_run(self):
        self.assertEqual(report.problems(summary(entry("a", (10, 10), (4, 4))), {}), [])

    def test_are_none_without_branches(self):
        self.assertEqual(report.problems(summary(entry("a", (10, 10), (0, 0))), {}), [])

    def test_are_none_at_the_limits_with_a_reason(self):
        self.assertEqual(report.problems(summary(entry("a", (95, 100), (85, 100))), {"a": "why"}),
                         [])

    def test_are_too_few_lines_and_branches(self):
        self.assertEqual(report.problems(summary(entry("a", (949, 1000), (849, 1000))), {"a": "w"}),
                         ["94.9 % of lines are run, at least 95 % have to be",
                          "84.9 % of branches are run, at least 85 % have to be"])

    def test_are_gaps_without_reason_and_reasons_without_gap(self):
        files = summary(entry("a", (99, 100), (9, 9)), entry("b", (100, 100), (9, 9)))
        self.assertEqual(report.problems(files, {"b": "why", "c": "why"}),
                         ["a has lines that are not run, and no reason",
                          "b has a reason for lines that are not run, and none is",
                          "c has a reason for lines that are not run, and none is"])


class Report(unittest.TestCase):
    def test_rounds_down(self):
        self.assertIn("2999/3000  99.9 %", report.table([entry("a", (2999, 3000), (0, 0))])[1])

    def test_has_every_file_the_sum_and_the_reasons(self):
        text = report.report(summary(entry("a.cpp", (1, 2), (3, 4)), entry("b.cpp", (2, 2), (0, 0))),
                             {"a.cpp": "no camera"})
        self.assertIn("a.cpp", text)
        self.assertIn("1/2     50.0 %      3/4     75.0 %", text)
        self.assertIn("2/2    100.0 %      0/0    100.0 %", text)
        self.assertIn("all", text)
        self.assertIn("3/4     75.0 %      3/4     75.0 %", text)
        self.assertTrue(text.endswith("Not run, and why:\n  a.cpp\n      no camera"))


if __name__ == "__main__":
    unittest.main()
