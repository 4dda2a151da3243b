"""Usage: tables_test.py BENCH_FOLDER"""

import sys
import unittest

sys.path.insert(0, sys.argv.pop(1))
import tables


def case(median, limit=None, spread=0.0, replaces=None):
    return {"median": median, "spread": spread, "limit": limit, "replaces": replaces}


def run(cases, **more):
    return {"about": {"date": "today"}, "cases": cases, **more}


class Tables(unittest.TestCase):
    def rows(self, text):
        return text.splitlines()[2:]

    def test_aligns_numbers_right_and_marked_columns_left(self):
        self.assertEqual(tables.table(["a", "b", "'c"], [["1", "2", "3"]]),
                         "| a | b | c |\n|---|---:|---|\n| 1 | 2 | 3 |")

    def test_lists_each_limit_before_the_cases_that_it_belongs_to(self):
        text = tables.steps_beside_limits(run({
            "z": case(1.0), "a": case(4.0, "z", 0.25), "b": case(2.0, "z", replaces="a")}))
        self.assertEqual(self.rows(text), [
            "| z | 1.0 us | 0% |  |  |  |  |",
            "| a | 4.0 us | 25% | z | 4.00 |  |  |",
            "| b | 2.0 us | 0% | z | 2.00 | a | 2.00 |"])

    def test_keeps_cases_with_tables_of_their_own_out_of_the_list(self):
        text = tables.steps_beside_limits(run({
            "size/processFrame/320x240/dense": case(1.0), "blobs/1/detectFrame": case(1.0),
            "grid/2/nearbyPoints": case(1.0), "clients/1/touches": case(1.0),
            "instead:opencv/a": case(1.0)}))
        self.assertEqual(self.rows(text), [])

    def test_puts_what_others_do_beside_ours(self):
        text = tables.instead(run({"a/b": case(2.0), "instead:opencv/a/b": case(5.0),
                                   "instead:opencv/not/ours": case(1.0)}))
        self.assertEqual(self.rows(text), ["| a/b | 2.0 us | OpenCV | 5.0 us | 2.50 |"])

    def test_shows_costs_a_pixel_over_the_size(self):
        text = tables.image_sizes(run({"size/detectFrame/320x240/dense": case(153.6),
                                       "memoryPass/320x240": case(1.0)}))
        self.assertEqual(self.rows(text),
                         ["| 320x240, dense |  |  | 153.6 us | 2.00 | 153.60 |"])

    def test_orders_counts_as_numbers(self):
        text = tables.fingertips(run({f"blobs/{count}/detectFrame": case(1.0)
                                      for count in (10, 2, 0)}))
        self.assertEqual([row.split()[1] for row in self.rows(text)], ["0", "2", "10"])

    def test_divides_by_the_number_of_clients(self):
        text = tables.clients(run({"clients/4/touches": case(40.0)}))
        self.assertEqual(self.rows(text), ["| 4 | 40.0 us | 10.0 us |  |  |"])

    def test_divides_by_the_smallest_grid(self):
        text = tables.grids(run({"grid/2/nearbyPoints": case(10.0),
                                 "grid/64/nearbyPoints": case(15.0)}))
        self.assertEqual(self.rows(text)[1], "| 64 x 64 x 64 | 15.0 ns | 1.50 |  |  |")

    def test_says_whether_a_goal_is_met_and_the_aim_reached(self):
        cases = {"bareParse/64x48x16": case(10.0),
                 "importGrid/64x48x16": case(16.0, "bareParse/64x48x16"),
                 "detectFrame/640x480/dense": case(1.0),
                 "instead:opencv/detectFrame/640x480/dense": case(5.0),
                 "processFrame/640x480/dense/scalar": case(17.0),
                 "processFrame/640x480/dense/avx2":
                     case(1.0, replaces="processFrame/640x480/dense/scalar")}
        self.assertEqual(self.rows(tables.goal_table(run(cases))), [
            "| processFrame/640x480/dense/scalar over processFrame/640x480/dense/avx2 | 17.00 "
            "| at least 18 | no | 30 | no |",
            "| importGrid/64x48x16 over bareParse/64x48x16 | 1.60 | at most 1.5 | no |  |  |",
            "| instead:opencv/detectFrame/640x480/dense over ours | 5.00 | at least 5 | yes | 7 | no |"])

    def test_shows_what_a_further_client_costs(self):
        row = {"streams": "all", "frameBytes": 2e6, "server1": 10e6, "server16": 40e6, "host": 5e6}
        self.assertEqual(
            self.rows(tables.memory(run({}, memory=[row]))),
            ["| all | 2.00 MB | 10.00 MB | 40.00 MB | 2.00 MB | 5.00 MB |"])

    def test_shows_how_well_fingers_are_found(self):
        scene = {"name": "tapping", "frames": 1800, "touchDowns": 4, "detectionRate": 0.75,
                 "missed": 1, "broken": 2, "splits": 3, "identitySwitches": 4,
                 "falseTouchesPerMinute": 0.5, "firstReportFrame": {"mean": 2.25},
                 "errorBeforeCalibrationMm": {"mean": 1.5, "p95": 3.0},
                 "errorMm": {"mean": 0.5, "p95": 1.0}, "jitterMm": 0.125, "lag": {"ms": 20.5}}
        nothing = scene | {"name": "empty", "touchDowns": 0, "detectionRate": None,
                           "firstReportFrame": None, "errorBeforeCalibrationMm": None,
                           "errorMm": None, "jitterMm": None, "lag": None}
        text = tables.accuracy(run({}, accuracy={"scenes": [scene, nothing]}))
        self.assertEqual(self.rows(text), [
            "| tapping | 1,800 | 4 | 75.0 % | 1 | 2 | 3 | 4 | 0.50 | 2.25 | 1.50 | 3.00 | 0.50 "
            "| 1.00 | 0.125 | 20.5 |",
            "| empty | 1,800 | 0 |  | 1 | 2 | 3 | 4 | 0.50 |  |  |  |  |  |  |  |"])

    def test_names_the_scenes_that_miss_a_goal(self):
        goals = [{"name": "found", "unit": "%", "atLeast": 99.2, "figure": 94.1, "met": False,
                  "notMetBy": ["tilted", "bent"]},
                 {"name": "false", "unit": "/min", "atMost": 0.1, "figure": 0.0, "met": True,
                  "notMetBy": []},
                 {"name": "not measured", "unit": "mm", "atMost": 1, "figure": None, "met": None,
                  "notMetBy": []}]
        self.assertEqual(self.rows(tables.accuracy_goals(run({}, accuracy={"goals": goals}))), [
            "| found, % | 94.10 | at least 99.2 | no | tilted, bent |",
            "| false, /min | 0.00 | at most 0.1 | yes |  |"])

    def test_lists_the_depth_images_with_their_pictures(self):
        row = {"image": "030.png", "blobs": 3, "touches": 2, "picture": "some/frame-000.png"}
        self.assertEqual(self.rows(tables.images(run({}, images=[row]))),
                         ["| 030.png | 3 | 2 | frame-000.png |"])

    def test_leaves_out_sections_without_rows(self):
        text = tables.markdown(run({"a": case(1.0)}))
        self.assertEqual([line for line in text.splitlines() if line.startswith("#")],
                         ["### Steps beside their limits"])
        self.assertTrue(text.startswith("- date: today\n"))

    def test_marks_changes_within_the_noise(self):
        before = run({"a": case(1.0), "b": case(1.0), "c": case(1.0, spread=0.3),
                      "gone": case(1.0)})
        after = run({"a": case(1.2), "b": case(0.8), "c": case(1.25), "new": case(1.0)})
        text = tables.comparison(before, after)
        self.assertIn("| c | 1.00 | 1.25 | us | +25% | 30% | within the noise |", text)
        self.assertIn("| a | 1.00 | 1.20 | us | +20% | 5% | worse |", text)
        self.assertIn("| b | 1.00 | 0.80 | us | -20% | 5% | better |", text)
        self.assertIn("Only before: gone", text)
        self.assertNotIn("limit", text)
        self.assertIn("Only now: new", text)

    def test_names_what_cannot_be_compared(self):
        text = tables.comparison(run({"l": case(1.0), "a": case(1.0, "l")}),
                                 run({"a": case(1.0, "l")}))
        self.assertIn("Only before: l", text)
        self.assertIn("Not beside the same limit in both: a", text)


unittest.main()
