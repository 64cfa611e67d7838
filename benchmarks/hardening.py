"""What hardening costs: our times in a build that has it by those in one that has not.

    hardening.py BUILD UNHARDENED_BUILD NAME...

The builds run in turns, three times each, and of each row the least time counts."""
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

RUNS = 3


def rows(build, name):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "rows"
        subprocess.run([f"{build}/benchmarks/benchmark_{name}"], env={**os.environ, "KELMARA_BENCH_FILE": str(path)},
                       check=True, capture_output=True)
        told = [json.loads(line) for line in path.read_text().splitlines()]
    return {(row["what"], row["peer"]): row["ours"] for row in told if "peer" in row}


def least(found):
    return {key: min(run[key] for run in found) for key in found[0]}


for name in sys.argv[3:]:
    found = {build: [] for build in sys.argv[1:3]}
    for _ in range(RUNS):
        for build in found:
            found[build].append(rows(build, name))
    hardened, bare = (least(runs) for runs in found.values())
    ratios = {key: hardened[key] / bare[key] for key in hardened}
    worst = max(ratios, key=ratios.get)
    print(f"| `benchmark_{name}` | {statistics.median(ratios.values()):.2f} | {worst[0]} ({ratios[worst]:.2f}) |")
