#!/usr/bin/env python3
"""How often each fuzz target was run, out of what it printed: a table for docs/reliability.md.

    executions.py FOLDER...     each holds TARGET.log files; runs of the same target in several folders are added up"""
import pathlib
import re
import sys

SOURCES = pathlib.Path(__file__).parent


def subject(target):
    comment = []
    for line in (SOURCES / f"{target}.cpp").read_text().splitlines():
        if not line.startswith("//"):
            break
        comment.append(line.lstrip("/ "))
    return re.split(r"[:.](?:\s|$)", " ".join(comment))[0]


def executions(log):
    told = re.search(r"number_of_executed_units: *(\d+)", log)
    steps = re.findall(r"^#(\d+)", log, re.MULTILINE)  # of one that stopped at a finding
    return int(told[1]) if told else int(steps[-1]) if steps else 0


def places(log):
    return max((int(number) for number in re.findall(r"\bcov: (\d+)", log)), default=0)


runs = {}
for folder in sys.argv[1:]:
    for path in sorted(pathlib.Path(folder).glob("*.log")):
        log = path.read_text(errors="replace")
        before = runs.get(path.stem, (0, 0))
        runs[path.stem] = before[0] + executions(log), max(before[1], places(log))
print("| Target | Input | Executions | Places reached |\n|---|---|---:|---:|")
for target, (count, reached) in sorted(runs.items()):
    print(f"| `{target}` | {subject(target)} | {count:,} | {reached:,} |")
print(f"| **all** | | **{sum(count for count, _ in runs.values()):,}** | |")
