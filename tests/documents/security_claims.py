"""Every claim of the security page names tests, and every test that it names exists."""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
page = root / "docs" / "security.md"
heading = re.compile(r"\|\s*Claim\s*\|\s*Shown by\s*\|")


def existing_tests():
    names = set()
    for source in (root / "tests").rglob("*.cpp"):
        declared = re.findall(r"^TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", source.read_text(), re.M)
        names |= {f"{suite}.{name}" for suite, name in declared}
    for script in (root / "tests").rglob("CMakeLists.txt"):
        names |= set(re.findall(r"add_test\(NAME\s+([\w.]+)", script.read_text()))
    return names


def problems(text, tests):
    """What is wrong with a page; and how many claims it makes."""
    found, claims, in_table = [], 0, False
    for number, line in enumerate(text.splitlines(), 1):
        if heading.match(line):
            in_table = True
        elif not line.startswith("|"):
            in_table = False
        elif in_table and not set(line) <= set("|- "):
            claims += 1
            named = re.findall(r"`(\w+\.\w+)`", line.rsplit("|", 2)[1])
            if not named:
                found.append(f"line {number}: this claim names no test")
            found += [f"line {number}: no test {name}" for name in named if name not in tests]
    return found, claims


tests = existing_tests()
failures, count = problems(page.read_text(), tests)
print(f"{count} claims, {len(tests)} tests")
if count < 30:
    failures.append(f"only {count} claims found: has the form of the tables changed?")

# A check that finds nothing wrong with anything would pass as well.
table = "| Claim | Shown by |\n|---|---|\n"
for broken in ("| x | `Broadcaster.DoesNotExist` |", "| x | |", "| `Broadcaster.X` | see there |"):
    if not problems(table + broken, tests)[0]:
        failures.append(f"nothing was found wrong with: {broken}")

if failures:
    sys.exit("\n".join(failures))
