#!/usr/bin/env python3
"""Runs the benchmarks and prints a Markdown table of medians as ratios to their limits.

Repetitions of all cases are interleaved at random, so that a machine that slows down for a while
slows all of them. A case's label names the case that is its limit, then the one it replaces.
"""

import argparse
import datetime
import json
import pathlib
import platform
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", type=pathlib.Path,
                        default=ROOT / "build/release/bin/qvr-bench")
    parser.add_argument("--filter", default=".", help="regular expression of case names")
    parser.add_argument("--repetitions", type=int, default=9)
    parser.add_argument("--min-time", type=float, default=0.1, help="seconds per repetition")
    parser.add_argument("--json", type=pathlib.Path,
                        help="where to write the raw results (default: beside the program)")
    return parser.parse_args()


def run(arguments, raw):
    command = [
        str(arguments.program),
        f"--benchmark_filter={arguments.filter}",
        f"--benchmark_repetitions={arguments.repetitions}",
        f"--benchmark_min_time={arguments.min_time}",
        "--benchmark_enable_random_interleaving=true",
        "--benchmark_out_format=json",
        f"--benchmark_out={raw}",
    ]
    finished = subprocess.run(command, capture_output=True, text=True)
    if finished.returncode != 0:
        sys.exit(finished.stderr)
    return json.loads(raw.read_text())


def processor():
    try:
        for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or platform.machine()


def collect(entries):
    """Times in microseconds of each case's repetitions; the names of limits and replaced cases."""
    times, limits, replaced = {}, {}, {}
    for entry in entries:
        name = entry["run_name"]
        if entry.get("error_occurred"):
            sys.exit(f"{name}: {entry.get('error_message')}")
        if entry["run_type"] != "iteration":
            continue
        clock = "real_time" if name.endswith("/real_time") else "cpu_time"
        name = name.removesuffix("/real_time")
        times.setdefault(name, []).append(entry[clock] * MICROSECONDS[entry["time_unit"]])
        limit, _, slower = entry.get("label", "").partition(" ")
        if limit.strip("-"):
            limits[name] = limit
        if slower:
            replaced[name] = slower
    return times, limits, replaced


def spread(samples):
    """Distance of the middle half's ends, as a share of the median."""
    if len(samples) < 2:
        return 0.0
    lower, _, upper = statistics.quantiles(samples, n=4)
    return (upper - lower) / statistics.median(samples)


def table(times, limits, replaced):
    medians = {name: statistics.median(samples) for name, samples in times.items()}
    lines = [
        "| case | median | spread | limit | times the limit | replaces | times faster |",
        "|---|---:|---:|---|---:|---|---:|",
    ]
    # Each limit is followed by the cases it belongs to.
    for name in sorted(medians, key=lambda case: (limits.get(case, case), case in limits, case)):
        median = medians[name]
        limit = limits.get(name, "")
        ratio = f"{median / medians[limit]:.2f}" if limit in medians else ""
        slower = replaced.get(name, "")
        factor = f"{medians[slower] / median:.2f}" if slower in medians else ""
        lines.append(f"| {name} | {median:.1f} us | {spread(times[name]):.0%} "
                     f"| {limit} | {ratio} | {slower} | {factor} |")
    return "\n".join(lines)


def main():
    arguments = parse_arguments()
    if not arguments.program.exists():
        sys.exit(f"{arguments.program} is missing: build target qvr-bench of preset release")
    raw = arguments.json or arguments.program.with_name("qvr-bench.json")
    results = run(arguments, raw)
    context = results["context"]
    times, limits, replaced = collect(results["benchmarks"])
    print(f"- date: {datetime.date.today().isoformat()}")
    print(f"- machine: {processor()}, {context['num_cpus']} processors")
    print(f"- compiler: {context.get('compiler', 'unknown')}")
    load = ", ".join(f"{share:.1f}" for share in context["load_avg"])
    print(f"- load average at the start: {load}")
    print(f"- median of {arguments.repetitions} interleaved repetitions of at least "
          f"{arguments.min_time} s; spread is the middle half's width")
    print()
    print(table(times, limits, replaced))


if __name__ == "__main__":
    main()
