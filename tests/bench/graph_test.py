"""Usage: graph_test.py BENCH_FOLDER"""

import sys
import unittest
import xml.etree.ElementTree as xml

sys.path.insert(0, sys.argv.pop(1))
import graph


def results(cases):
    return {"about": {"machine": "a <fast> one", "date": "today"},
            "cases": {name: {"median": median} for name, median in cases.items()}}


class Graph(unittest.TestCase):
    def test_draws_a_line_through_the_sizes_that_were_measured(self):
        drawn = graph.draw(results({"memoryPass/320x240": 2.0, "memoryPass/1920x1080": 60.0,
                                    "memoryPass/3x3": 1.0}))
        lines = xml.fromstring(drawn).findall("{*}polyline")
        self.assertEqual(len(lines), 1)
        self.assertEqual(len(lines[0].get("points").split()), 2)

    def test_dearer_is_higher_and_larger_is_further_right(self):
        axes = graph.Axes([[(100, 1.0), (10000, 900.0)]])
        self.assertLess(axes.y(900.0), axes.y(1.0))
        self.assertGreater(axes.x(10000), axes.x(100))

    def test_labels_do_not_cover_one_another(self):
        placed = graph.apart([(50.0, "b"), (10.0, "a"), (12.0, "c")], 16)
        self.assertEqual(placed, [(10.0, "a"), (26.0, "c"), (50.0, "b")])

    def test_refuses_results_without_sizes(self):
        with self.assertRaises(ValueError):
            graph.draw(results({"a": 1.0}))


unittest.main()
