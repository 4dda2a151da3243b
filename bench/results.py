"""What a run of the benchmarks found, in one dictionary that is written as JSON.

    about     date, machine, compiler, forms in use, repetitions: strings by name
    cases     by name: median and spread (the middle half's width as a share of the median) in
              microseconds, and the names of the case that is its limit and of the slower one
              that it replaces, where there are
    latency   what qvr-latency prints
    memory    what memory.measure returns
    accuracy  what qvr-evaluate writes: scenes, total and goals
    images    what accuracy.images returns
"""

import statistics

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}

# A difference below this is never called a change.
LEAST_NOISE = 0.05

# One run measures these once. The slowest hundredth of the frames is a few frames that waited for
# the scheduler.
LATENCY_NOISE = {"p50": 0.15, "p99": 1.0}
MEMORY_NOISE = 0.05

# The same scenes and noise in every run; the figures move with the program alone.
ACCURACY_NOISE = 0.0

# Of the context that the benchmark library writes, what is the library's own.
LIBRARY_CONTEXT = {"date", "host_name", "executable", "num_cpus", "mhz_per_cpu",
                   "cpu_scaling_enabled", "aslr_enabled", "caches", "load_avg", "library_version",
                   "library_build_type", "json_schema_version"}


class FailedCase(Exception):
    pass


def spread(samples):
    if len(samples) < 2:
        return 0.0
    lower, _, upper = statistics.quantiles(samples, n=4)
    return (upper - lower) / statistics.median(samples)


def cases_from(entries):
    """The cases of the benchmark library's entries; each repetition is an entry. A label is the
    name of the limit, "-" for none, then that of the replaced case."""
    times, labels = {}, {}
    for entry in entries:
        name = entry["run_name"]
        if entry.get("error_occurred"):
            raise FailedCase(f"{name}: {entry.get('error_message')}")
        if entry["run_type"] != "iteration":
            continue
        clock = "real_time" if name.endswith("/real_time") else "cpu_time"
        name = name.removesuffix("/real_time")
        times.setdefault(name, []).append(entry[clock] * MICROSECONDS[entry["time_unit"]])
        if entry.get("label"):
            labels[name] = entry["label"]
    cases = {}
    for name, samples in times.items():
        limit, _, replaces = labels.get(name, "").partition(" ")
        cases[name] = {"median": statistics.median(samples), "spread": spread(samples),
                       "limit": limit if limit not in ("", "-") else None,
                       "replaces": replaces or None}
    return cases


def ratio(cases, name, other):
    """How many times the median of `other` the one of `name` is; None when one is missing."""
    if name not in cases or other not in cases:
        return None
    return cases[name]["median"] / cases[other]["median"]


def figures(results):
    """Everything that can be compared: by name, (value, noise, unit). Ratios within the run
    where there is a limit, for those depend least on the machine."""
    cases = results["cases"]
    found = {}
    for name, case in cases.items():
        limit = case["limit"] or case["replaces"]
        if limit in cases:
            noise = case["spread"] + cases[limit]["spread"]
            found[name] = (ratio(cases, name, limit), noise, f"x {limit}")
        else:
            found[name] = (case["median"], case["spread"], "us")
    for row in results.get("latency", []):
        name = f"latency/{row['streams']}/beside {row['beside']}"
        for quantile, noise in LATENCY_NOISE.items():
            found[f"{name}/{quantile}"] = (row[quantile], noise, "ms")
    for row in results.get("memory", []):
        for part in ("host", "server1", "server16"):
            found[f"memory/{row['streams']}/{part}"] = (row[part] / 1e6, MEMORY_NOISE, "MB")
    for scene in results.get("accuracy", {}).get("scenes", []):
        for figure, value, unit in accuracy_figures(scene):
            found[f"accuracy/{scene['name']}/{figure}"] = (value, ACCURACY_NOISE, unit)
    return found


def accuracy_figures(scene):
    """(name, value, unit) of a scene's figures, those that the scene has; all are costs."""
    error, first = scene["errorMm"] or {}, scene["firstReportFrame"] or {}
    named = [
        ("missed", scene["missed"], "touches"),
        ("false", scene["falseTouchesPerMinute"], "a minute"),
        ("error/mean", error.get("mean"), "mm"),
        ("error/p95", error.get("p95"), "mm"),
        ("jitter", scene["jitterMm"], "mm"),
        ("first report", first.get("mean"), "frames"),
    ]
    return [figure for figure in named if figure[1] is not None]


def changes(before, after):
    """(name, old, new, unit, change, noise) of what both have, the largest change first. A change
    is the new value's excess as a share of the old; all figures are costs, so more is worse."""
    old, new = figures(before), figures(after)
    found = []
    for name in old.keys() & new.keys():
        (was, old_noise, unit), (now, new_noise, new_unit) = old[name], new[name]
        if was > 0 and now > 0 and unit == new_unit:
            noise = max(LEAST_NOISE, old_noise + new_noise)
            found.append((name, was, now, unit, now / was - 1, noise))
    return sorted(found, key=lambda row: (-max(1 + row[4], 1 / (1 + row[4])), row[0]))
