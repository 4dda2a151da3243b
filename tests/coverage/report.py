#!/usr/bin/env python3
"""Prints what the tests run of the library, and why the rest is not run.

    report.py SUMMARY REASONS

SUMMARY is gcovr's --json-summary. REASONS has a line "FILE: REASON" for each file of which some
line is not run. Fails when too little is run, when a file has no reason, and when a reason has
outlived its file's gaps.
"""

import json
import pathlib
import sys

LEAST_LINES = 95.0
LEAST_BRANCHES = 85.0


def read_reasons(text):
    """The reasons by file, in order; empty lines and those that begin with # are left out."""
    reasons = {}
    for line in text.splitlines():
        if line.strip() and not line.startswith("#"):
            file, colon, reason = line.partition(": ")
            if not colon or not reason.strip():
                raise ValueError(f"no reason in the line '{line}'")
            if file in reasons:
                raise ValueError(f"two reasons for {file}")
            reasons[file] = reason.strip()
    return reasons


def percent(covered, total):
    """Rounded down to a tenth, so that only all is 100."""
    return (1000 * covered // total) / 10 if total else 100.0


def table(files):
    rows = [f"{'file':<58}{'lines':>18}{'branches':>20}"]
    for file in files:
        lines = percent(file["line_covered"], file["line_total"])
        branches = percent(file["branch_covered"], file["branch_total"])
        rows.append(f"{file['filename']:<58}"
                    f"{file['line_covered']:>5}/{file['line_total']:<5}{lines:5.1f} %"
                    f"{file['branch_covered']:>7}/{file['branch_total']:<5}{branches:5.1f} %")
    return rows


def problems(summary, reasons):
    found = []
    for name, many, least in (("line", "lines", LEAST_LINES),
                              ("branch", "branches", LEAST_BRANCHES)):
        reached = percent(summary[f"{name}_covered"], summary[f"{name}_total"])
        if reached < least:
            found.append(f"{reached:.1f} % of {many} are run, at least {least:.0f} % have to be")
    gaps = {file["filename"] for file in summary["files"]
            if file["line_covered"] < file["line_total"]}
    found += [f"{file} has lines that are not run, and no reason" for file in sorted(gaps)
              if file not in reasons]
    found += [f"{file} has a reason for lines that are not run, and none is" for file in reasons
              if file not in gaps]
    return found


def report(summary, reasons):
    lines = table(summary["files"])
    lines += table([dict(summary, filename="all")])[1:]
    if reasons:
        lines += ["", "Not run, and why:"]
        lines += [f"  {file}\n      {reason}" for file, reason in reasons.items()]
    return "\n".join(lines)


def main(summary_file, reasons_file):
    summary = json.loads(pathlib.Path(summary_file).read_text())
    reasons = read_reasons(pathlib.Path(reasons_file).read_text())
    print(report(summary, reasons))
    found = problems(summary, reasons)
    if found:
        sys.exit("\n" + "\n".join(found))


if __name__ == "__main__":
    main(*sys.argv[1:])
