#!/usr/bin/env python3
"""Measures everything and prints it as Markdown tables; writes them and the results as files.

Repetitions of all cases are interleaved at random, so that a machine that slows down for a while
slows all of them. What is compared is ratios within a run: machines differ, ratios travel.
"""

import argparse
import datetime
import json
import pathlib
import platform
import subprocess
import sys

import accuracy
import memory
import results
import tables

ROOT = pathlib.Path(__file__).resolve().parent.parent
SETTINGS = ROOT / "docs/examples/simulated/QVR_calibration"
IMAGES = ROOT.parent / "shared/data/sr305"
BEGIN = "<!-- figures: begin -->"
END = "<!-- figures: end -->"


def parse_arguments():
    parser = argparse.ArgumentParser(prog="./dev bench", description=__doc__.splitlines()[0])
    parser.add_argument("--programs", type=pathlib.Path, default=ROOT / "build/release/bin",
                        help="folder of qvr-bench, qvr-latency, qvr-evaluate, qvr-server and "
                             "qvr-host")
    parser.add_argument("--filter", help="regular expression of case names; only these cases")
    parser.add_argument("--repetitions", type=int, default=9)
    parser.add_argument("--min-time", type=float, default=0.1, help="seconds per repetition")
    parser.add_argument("--frames", type=int, default=600, help="frames per latency measurement")
    parser.add_argument("--cases-only", action="store_true",
                        help="no latency, no memory, no accuracy")
    parser.add_argument("--images", type=pathlib.Path, metavar="DIR", default=IMAGES,
                        help="depth images in which blobs and touches are looked for, where there "
                             "are any; their pictures go beside the results "
                             "(default: ../shared/data/sr305)")
    parser.add_argument("--from", dest="source", type=pathlib.Path, metavar="FILE",
                        help="measure nothing, take the results of an earlier run")
    parser.add_argument("--compare", type=pathlib.Path, metavar="FILE",
                        help="print what changed against the results of an earlier run")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE",
                        help="where to write the results (default: build/bench/results.json); "
                             "the tables go beside them, as .md")
    parser.add_argument("--markdown", action="store_true", help="print nothing but the tables")
    parser.add_argument("--into", type=pathlib.Path, metavar="PAGE",
                        help="put the tables between the marks of this page")
    return parser.parse_args()


def run_cases(arguments, raw):
    finished = subprocess.run(
        [
            str(arguments.programs / "qvr-bench"),
            f"--benchmark_filter={arguments.filter or '.'}",
            f"--benchmark_repetitions={arguments.repetitions}",
            f"--benchmark_min_time={arguments.min_time}",
            "--benchmark_enable_random_interleaving=true",
            "--benchmark_out_format=json",
            f"--benchmark_out={raw}",
        ],
        capture_output=True, text=True)
    if finished.returncode != 0:
        sys.exit(finished.stderr)
    return json.loads(raw.read_text())


def run_latency(arguments):
    finished = subprocess.run([str(arguments.programs / "qvr-latency"), str(arguments.frames)],
                              stdout=subprocess.PIPE, text=True)
    if finished.returncode != 0:
        sys.exit("qvr-latency failed")
    return json.loads(finished.stdout)


def processor():
    try:
        for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or platform.machine()


def revision():
    try:
        found = subprocess.run(["git", "describe", "--always", "--dirty"], cwd=ROOT,
                               capture_output=True, text=True)
    except OSError:
        return "unknown"
    return found.stdout.strip() or "unknown"


def about(arguments, context):
    told = {
        "date": datetime.date.today().isoformat(),
        "revision": revision(),
        "machine": f"{processor()}, {context['num_cpus']} processors",
        "system": f"{platform.system()} {platform.machine()}",
    }
    # What the program says of itself: its compiler, and the forms of its steps in use.
    told.update((name, value) for name, value in context.items()
                if name not in results.LIBRARY_CONTEXT)
    told["load average at the start"] = ", ".join(f"{share:.1f}" for share in context["load_avg"])
    told["method"] = (f"median of {arguments.repetitions} interleaved repetitions of at least "
                      f"{arguments.min_time} s; spread is the middle half's width")
    return told


def measure(arguments, target):
    for program in ("qvr-bench", "qvr-latency", "qvr-evaluate", "qvr-server", "qvr-host"):
        if not (arguments.programs / program).exists():
            sys.exit(f"{program} is missing in {arguments.programs}: ./dev bench builds it")
    print("measuring; a quiet machine gives steadier figures", file=sys.stderr)
    raw = run_cases(arguments, target.with_suffix(".raw.json"))
    try:
        cases = results.cases_from(raw["benchmarks"])
    except results.FailedCase as failure:
        sys.exit(str(failure))
    found = {"about": about(arguments, raw["context"]), "cases": cases}
    if not (arguments.cases_only or arguments.filter):
        found["latency"] = run_latency(arguments)
        found["memory"] = memory.measure(arguments.programs, SETTINGS)
        found["accuracy"] = accuracy.scenes(arguments.programs)
        found["images"] = accuracy.images(arguments.programs, arguments.images,
                                          target.parent / "pictures")
    return found


def insert(page, text):
    """Replaces what stands between the marks of the page."""
    before, begin, rest = page.read_text().partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"{page} lacks {BEGIN} or {END}")
    page.write_text(f"{before}{BEGIN}\n\n{text}\n{END}{after}")


def main():
    arguments = parse_arguments()
    # Read first: the new results may go to the same file.
    earlier = json.loads(arguments.compare.read_text()) if arguments.compare else None
    if arguments.source:
        found = json.loads(arguments.source.read_text())
    else:
        target = arguments.json or ROOT / "build/bench/results.json"
        target.parent.mkdir(parents=True, exist_ok=True)
        found = measure(arguments, target)
        target.write_text(json.dumps(found, indent=1) + "\n")
        target.with_suffix(".md").write_text(tables.markdown(found))
        print(f"results: {target}, {target.with_suffix('.md')}", file=sys.stderr)
    if arguments.into:
        insert(arguments.into, tables.markdown(found))
    if arguments.markdown or not earlier:
        print(tables.markdown(found), end="")
    if earlier:
        if arguments.markdown:
            print()
        print(tables.comparison(earlier, found), end="")


if __name__ == "__main__":
    main()
