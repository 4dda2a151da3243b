#!/usr/bin/env python3
"""Runs fuzz targets, or keeps in their corpora what earlier runs have found worth keeping.

Every target starts from its checked-in corpus (tests/fuzz/corpus/TARGET) and from what it has grown
itself before (build/fuzz/corpus/TARGET).
"""

import argparse
import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
CHECKED_IN = ROOT / "tests/fuzz/corpus"
BUILD = ROOT / "build/fuzz"
GROWN = BUILD / "corpus"
FINDINGS = BUILD / "findings"
MEMORY = pathlib.Path("/dev/shm")

SECONDS = 60
LARGEST_FILE = 64 * 1024
LARGEST_CORPUS = 300 * 1024
EXECUTION_SECONDS = 25
MEMORY_MEGABYTES = 4096

# A sanitizer's report begins with one of these.
REPORT = re.compile(r"^.*runtime error:|^==\d+==ERROR|^this does not hold|^terminate called", re.M)


@dataclasses.dataclass
class Run:
    """What one run of a target came to."""
    target: str
    executions: int
    executions_per_second: int
    edges: int
    features: int
    inputs: int
    finding: str = ""  # the input that shows it

    def row(self):
        return (f"{self.target:<20}{self.executions:>12}{self.executions_per_second:>9}"
                f"{self.edges:>8}{self.features:>10}{self.inputs:>8}  "
                f"{'FINDING' if self.finding else '-'}")


HEAD = (f"{'target':<20}{'executions':>12}{'a second':>9}{'edges':>8}{'features':>10}"
        f"{'corpus':>8}  findings")


def read_run(target, output):
    """The Run that libFuzzer's output tells of."""
    def last(pattern):
        found = re.findall(pattern, output)
        return int(found[-1]) if found else 0

    finding = re.findall(r"Test unit written to (\S+)", output)
    return Run(target=target,
               executions=last(r"stat::number_of_executed_units:\s+(\d+)"),
               executions_per_second=last(r"stat::average_exec_per_sec:\s+(\d+)"),
               edges=last(r"\bcov: (\d+)"),
               features=last(r"\bft: (\d+)"),
               inputs=last(r"\bcorp: (\d+)/"),
               finding=finding[-1] if finding else "")


def known_targets():
    return sorted(folder.name for folder in CHECKED_IN.iterdir() if folder.is_dir())


def program(target):
    return BUILD / "bin" / f"fuzz_{target}"


def folder(path):
    path.mkdir(parents=True, exist_ok=True)
    return path


def environment(temporary):
    return {**os.environ, "TMPDIR": temporary,
            "ASAN_OPTIONS": "detect_stack_use_after_return=1:strict_string_checks=1",
            "UBSAN_OPTIONS": "print_stacktrace=1"}


def temporary_folder():
    """Targets write files at every execution: into memory, where there is such a place."""
    return tempfile.TemporaryDirectory(prefix="fuzz-", dir=MEMORY if MEMORY.is_dir() else None)


def start(target, arguments):
    """The exit code and the output of a target's program."""
    with temporary_folder() as temporary:
        result = subprocess.run([program(target), *arguments], env=environment(temporary),
                                stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    return result.returncode, result.stderr.decode(errors="replace")


def fuzz(target, seconds):
    """Prints the target's row; the report, too, when something was found. Whether nothing was."""
    code, output = start(target, [
        f"-max_total_time={seconds}", f"-timeout={EXECUTION_SECONDS}",
        f"-rss_limit_mb={MEMORY_MEGABYTES}", "-print_final_stats=1",
        f"-artifact_prefix={folder(FINDINGS)}/{target}-", folder(GROWN / target),
        CHECKED_IN / target])
    run = read_run(target, output)
    if code != 0 and not run.finding:
        run.finding = "none was written"
    print(run.row(), flush=True)
    if code == 0:
        return True
    report = REPORT.search(output)
    print(output[report.start():] if report else output[-4000:])
    print(f"replay it with: {program(target).relative_to(ROOT)} {run.finding}", flush=True)
    return False


def size(files):
    return sum(file.stat().st_size for file in files)


def minimise(target):
    """Takes over the grown inputs that reach what no checked-in one does, small ones first."""
    corpus = CHECKED_IN / target
    before = set(corpus.iterdir())
    # Reached or not is what counts here: by how often each place is reached, nearly every input
    # would differ.
    code, output = start(target, ["-set_cover_merge=1", "-use_counters=0", f"-max_len={LARGEST_FILE}",
                                  corpus, folder(GROWN / target)])
    added = sorted(set(corpus.iterdir()) - before, key=lambda file: file.stat().st_size)
    while added and size(before) + size(added) > LARGEST_CORPUS:
        added.pop().unlink()
    files = [*before, *added]
    print(f"{target:<20}{len(before):>8} ->{len(files):>6} files{size(files):>10} bytes",
          flush=True)
    if code != 0:
        print(output[-4000:])
    return code == 0


def parse_arguments(words):
    parser = argparse.ArgumentParser(prog="./dev fuzz", description=__doc__.splitlines()[0])
    parser.add_argument("target", nargs="?", help="one of: " + ", ".join(known_targets()))
    parser.add_argument("seconds", nargs="?", type=int, default=SECONDS,
                        help=f"for each target (default: {SECONDS})")
    parser.add_argument("--minimise", action="store_true",
                        help="run nothing; merge the grown corpora into the checked-in ones")
    parser.add_argument("--list", action="store_true",
                        help="run nothing; print the programs that would run")
    # A number alone is a time for every target.
    numbers = [word for word in words if word.isdigit()]
    others = [word for word in words if not word.isdigit()]
    arguments = parser.parse_args(others)
    if numbers:
        arguments.seconds = int(numbers[0])
    if arguments.target is not None and arguments.target not in known_targets():
        parser.error(f"unknown target '{arguments.target}'; known: {', '.join(known_targets())}")
    return arguments


def main():
    arguments = parse_arguments(sys.argv[1:])
    targets = [arguments.target] if arguments.target else known_targets()
    if arguments.list:
        print("\n".join(program(target).name for target in targets))
        return 0
    if arguments.minimise:
        good = [minimise(target) for target in targets]
    else:
        print(HEAD, flush=True)
        good = [fuzz(target, arguments.seconds) for target in targets]
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
