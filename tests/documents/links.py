"""Relative links in the documents name files that are there."""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
pages = [p for p in root.rglob("*.md") if "build" not in p.relative_to(root).parts]
failures = []
count = 0
for page in pages:
    for target in re.findall(r"\]\(([^)#\s]+)(?:#[^)]*)?\)", page.read_text()):
        if re.match(r"[a-z]+:", target):
            continue
        count += 1
        if not (page.parent / target).exists():
            failures.append(f"{page.relative_to(root)}: {target} does not exist")
print(f"{count} links in {len(pages)} pages")
if count == 0:
    failures.append("no links found")
if failures:
    sys.exit("\n".join(failures))
