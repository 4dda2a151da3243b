"""Usage: results_test.py BENCH_FOLDER"""

import sys
import unittest

sys.path.insert(0, sys.argv.pop(1))
import results


def entry(name, nanoseconds, **more):
    return {"run_name": name, "run_type": "iteration", "cpu_time": nanoseconds,
            "real_time": 10 * nanoseconds, "time_unit": "ns", **more}


def case(median, limit=None, spread=0.0, replaces=None):
    return {"median": median, "spread": spread, "limit": limit, "replaces": replaces}


class CasesFrom(unittest.TestCase):
    def test_takes_the_median_of_the_repetitions_in_microseconds(self):
        cases = results.cases_from([entry("a", 1000), entry("a", 9000), entry("a", 2000)])
        self.assertEqual(cases["a"]["median"], 2.0)

    def test_converts_units(self):
        cases = results.cases_from([entry("a", 3, time_unit="ms")])
        self.assertEqual(cases["a"]["median"], 3000.0)

    def test_takes_wall_time_where_the_name_says_so_and_drops_the_mark(self):
        cases = results.cases_from([entry("a/real_time", 1000), entry("b", 1000)])
        self.assertEqual(cases["a"]["median"], 10.0)
        self.assertEqual(cases["b"]["median"], 1.0)

    def test_leaves_out_the_aggregates(self):
        cases = results.cases_from([entry("a", 1000), entry("a", 5000, run_type="aggregate")])
        self.assertEqual(cases["a"]["median"], 1.0)

    def test_reads_limit_and_replaced_case_from_the_label(self):
        cases = results.cases_from([entry("a", 1), entry("b", 1, label="l"),
                                    entry("c", 1, label="l r"), entry("d", 1, label="- r")])
        found = {name: (case["limit"], case["replaces"]) for name, case in cases.items()}
        self.assertEqual(found, {"a": (None, None), "b": ("l", None), "c": ("l", "r"),
                                 "d": (None, "r")})

    def test_fails_on_a_case_that_failed(self):
        with self.assertRaisesRegex(results.FailedCase, "a: the result is wrong"):
            results.cases_from([entry("a", 0, error_occurred=True,
                                      error_message="the result is wrong")])

    def test_spread_is_the_middle_half_as_a_share_of_the_median(self):
        self.assertEqual(results.spread([10.0]), 0.0)
        self.assertAlmostEqual(results.spread([8.0, 9.0, 10.0, 11.0, 12.0]), 0.3)


class Changes(unittest.TestCase):
    def compare(self, before, after):
        return results.changes({"cases": before}, {"cases": after})

    def test_compares_ratios_where_there_is_a_limit(self):
        # Twice as slow a machine: nothing has changed but the limit itself.
        before = {"l": case(1.0), "a": case(4.0, "l")}
        after = {"l": case(2.0), "a": case(8.0, "l")}
        found = {row[0]: row[4] for row in self.compare(before, after)}
        self.assertEqual(found, {"a": 0.0, "l": 1.0})

    def test_puts_the_largest_change_first_in_either_direction(self):
        before = {"same": case(1.0), "half": case(2.0), "third": case(1.0)}
        after = {"same": case(1.0), "half": case(1.0), "third": case(3.0)}
        self.assertEqual([row[0] for row in self.compare(before, after)],
                         ["third", "half", "same"])

    def test_noise_sums_the_spreads_of_both_runs_and_of_the_limits(self):
        before = {"l": case(1.0, spread=0.01), "a": case(1.0, "l", spread=0.02)}
        after = {"l": case(1.0, spread=0.04), "a": case(1.0, "l", spread=0.08)}
        noise = {row[0]: row[5] for row in self.compare(before, after)}
        self.assertAlmostEqual(noise["a"], 0.15)
        self.assertEqual(noise["l"], results.LEAST_NOISE)

    def test_leaves_out_what_only_one_run_has_or_what_changed_its_limit(self):
        before = {"a": case(1.0), "b": case(1.0, "a"), "gone": case(1.0)}
        after = {"a": case(1.0), "b": case(1.0), "new": case(1.0)}
        self.assertEqual([row[0] for row in self.compare(before, after)], ["a"])

    def test_compares_latency_and_memory(self):
        def run(milliseconds, size):
            return {"cases": {},
                    "latency": [{"streams": "s", "beside": "nothing", "p50": milliseconds,
                                 "p99": 1.0}],
                    "memory": [{"streams": "s", "host": size, "server1": 1, "server16": 1}]}
        found = {row[0]: (row[1], row[2], row[3])
                 for row in results.changes(run(1.0, 2e6), run(2.0, 3e6))}
        self.assertEqual(found["latency/s/beside nothing/p50"], (1.0, 2.0, "ms"))
        self.assertEqual(found["memory/s/host"], (2.0, 3.0, "MB"))

    def test_compares_accuracy_where_a_scene_has_the_figure(self):
        def run(missed, mean):
            scene = {"name": "s", "missed": missed, "falseTouchesPerMinute": 0.0,
                     "errorMm": {"mean": mean, "p95": 2.0}, "jitterMm": None,
                     "firstReportFrame": None}
            return {"cases": {}, "accuracy": {"scenes": [scene]}}
        found = {row[0]: row[1:4] for row in results.changes(run(2, 1.0), run(4, 1.5))}
        self.assertEqual(found, {"accuracy/s/missed": (2, 4, "touches"),
                                 "accuracy/s/error/mean": (1.0, 1.5, "mm"),
                                 "accuracy/s/error/p95": (2.0, 2.0, "mm")})

    def test_trusts_a_p99_less_than_a_p50(self):
        found = results.figures({"cases": {}, "latency": [{"streams": "s", "beside": "nothing",
                                                           "p50": 1.0, "p99": 2.0}]})
        self.assertLess(found["latency/s/beside nothing/p50"][1],
                        found["latency/s/beside nothing/p99"][1])


unittest.main()
