"""Runs the benchmarks of a build and tells what they found: a table, and build/bench.json.

    run.py BUILD_FOLDER [NAME] [--keep | --compare [FILE]]

Each program runs twice, and of a row the run counts whose rounds differ less. --keep writes benchmarks/baseline.json
as well; --compare tells what has moved against it, or against FILE: ratios to the peer by more than a quarter,
exponents by more than a quarter of 1. Absolute figures are not compared, they are the machine's. Ends with 1 when a
program failed, took too long or found nothing: what the others found is told all the same, but not kept."""
import argparse
import contextlib
import json
import os
import pathlib
import platform
import signal
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "docs/scripts"))
from figures import time_of  # noqa: E402

BASELINE = ROOT / "benchmarks/baseline.json"
RUNS = 2
TIME_LIMIT = 300  # seconds, of one run of a program; the longest takes a tenth of that
MOVED = 1.25  # of a ratio
MOVED_EXPONENT = 0.25


def options():
    parser = argparse.ArgumentParser(prog="./dev bench", description="measure, each thing beside its peer")
    parser.add_argument("build", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("name", nargs="?", help="one program instead of all: strings for benchmark_strings")
    parser.add_argument("--keep", action="store_true", help="keep the figures as what later runs are compared with")
    parser.add_argument("--compare", nargs="?", type=pathlib.Path, const=BASELINE, metavar="FILE",
                        help="tell what has moved against the kept figures")
    chosen = parser.parse_args()
    if chosen.compare and not chosen.compare.is_file():
        parser.error(f"there is no file '{chosen.compare}'")
    return chosen


def machine():
    processor = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")), "?")
    compiler = subprocess.run(["g++", "-dumpfullversion"], capture_output=True, text=True).stdout.strip()
    return {"processor": processor, "processors": os.cpu_count(), "kernel": platform.release(), "compiler": f"g++ {compiler}"}


def key(row):
    return (row["component"], row["what"], row.get("peer", ""))


def doubt(row):
    """How far a row is from being quiet: of two runs the smaller one counts."""
    if "points" in row:
        return sum(taken for _, taken in row["points"])
    return row.get("spread", row["ours"])


def end(running):
    """And what it started: it has a process group of its own."""
    with contextlib.suppress(ProcessLookupError):
        os.killpg(running.pid, signal.SIGKILL)


def problem_of(program, environment):
    """What went wrong, with what the program said; None when it ended well."""
    with subprocess.Popen([program], env=environment, cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, errors="replace", start_new_session=True) as running:
        try:
            said, _ = running.communicate(timeout=TIME_LIMIT)
        except subprocess.TimeoutExpired:
            end(running)
            return f"took longer than {TIME_LIMIT} seconds\n{running.communicate()[0]}"
        except BaseException:
            end(running)
            raise
    return f"ended with {running.returncode}\n{said}" if running.returncode != 0 else None


def run(program):
    """The rows of one run, in their order; none when it did not end well."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "rows"
        problem = problem_of(program, {**os.environ, "KELMARA_BENCH_FILE": str(path)})
        lines = path.read_text().splitlines() if path.exists() and not problem else []
    if problem or not lines:
        print(f"{program.name}: {problem or 'ended well, but found nothing'}", file=sys.stderr)
    return [json.loads(line) for line in lines]


def measure(programs):
    """All rows, and whether every program found some each time."""
    best, well = {}, True
    for program in programs:
        print(program.name, file=sys.stderr, flush=True)
        for _ in range(RUNS):
            rows = run(program)
            well = well and bool(rows)
            for row in rows:
                if key(row) not in best or doubt(row) < doubt(best[key(row)]):
                    best[key(row)] = row
    return sorted(best.values(), key=lambda row: (row["component"], row.get("peer", "~"), "points" in row)), well


def tell(rows):
    title = None
    for row in (row for row in rows if "points" not in row):
        if (row["component"], row.get("peer")) != title:
            title = (row["component"], row.get("peer"))
            beside = f"beside {row['peer']}" if "peer" in row else "alone"
            print(f"\n{row['component'] + ', ' + beside:<62}{'ours':>10}{'peer':>10}{'ratio':>8}{'wanted':>9}{'rounds':>8}{'spread':>8}")
        if "peer" in row:
            missed = "" if row["ratio"] <= row["wanted"] else "  missed"
            print(f"  {row['what']:<60}{time_of(row['ours']):>10}{time_of(row['peers']):>10}{row['ratio']:>8.2f}{row['wanted']:>9.2f}"
                  f"{row['rounds']:>8}{row['spread']:>7.0%}{missed}")
        else:
            missed = "" if row["ours"] <= row["allowed"] else "  missed"
            print(f"  {row['what']:<60}{time_of(row['ours']):>10}{'':>18}{time_of(row['allowed']):>9}{row['rounds']:>8}{missed}")
    print(f"\n{'growth':<56}{'smallest':>18}{'greatest':>20}{'exponent':>10}{'at the end':>11}{'wanted':>8}")
    for row in (row for row in rows if "points" in row):
        ends = [f"{size:,}: {time_of(taken)}" for size, taken in (row["points"][0], row["points"][-1])]
        missed = "" if row["exponent"] <= row["wanted"] else "  missed"
        print(f"  {row['component'] + ': ' + row['what']:<54}{ends[0]:>18}{ends[1]:>20}{row['exponent']:>10.2f}{row['last']:>11.2f}"
              f"{row['wanted']:>8.2f}{missed}")


def compare(rows, path, of_all):
    """Tells what has moved; what one of the two files lacks too, where all was measured."""
    kept, moved = {key(row): row for row in json.loads(path.read_text())["rows"]}, 0
    print(f"\nAgainst {path.name}, ratios by more than {MOVED - 1:.0%}, exponents by more than {MOVED_EXPONENT}:")
    for row in rows:
        name, old = f"  {row['component']}: {row['what']}", kept.get(key(row))
        if old is None:
            print(f"{name}: is new")
        elif "ratio" in row and not 1 / MOVED <= row["ratio"] / old["ratio"] <= MOVED:
            word = "slower" if row["ratio"] > old["ratio"] else "faster"
            noise = f", rounds differ by {row['spread']:.0%}" if row["spread"] > MOVED - 1 else ""
            print(f"{name} (beside {row['peer']}): {old['ratio']:.2f}, now {row['ratio']:.2f}: {word}{noise}")
            moved += 1
        elif "points" in row and abs(row["exponent"] - old["exponent"]) > MOVED_EXPONENT:
            print(f"{name}: grew with {old['exponent']:.2f}, now with {row['exponent']:.2f}")
            moved += 1
    for gone in set(kept) - {key(row) for row in rows} if of_all else ():
        print(f"  {gone[0]}: {gone[1]}: was not measured")
    print(f"{moved} moved" if moved else "Nothing moved.")


def main():
    wanted = options()
    programs = sorted((wanted.build.resolve() / "benchmarks").glob(f"benchmark_{wanted.name or '*'}"))
    if not programs or (wanted.keep and wanted.name):
        sys.exit(f"no benchmark '{wanted.name}'" if not programs else "only a run of all is kept")
    rows, well = measure(programs)
    tell(rows)
    text = json.dumps({"machine": machine(), "rows": rows}, indent=1) + "\n"
    (ROOT / "build/bench.json").write_text(text)
    if wanted.compare:
        compare(rows, wanted.compare, not wanted.name)
    if wanted.keep and well:
        BASELINE.write_text(text)
        print(f"kept: {BASELINE.relative_to(ROOT)}; ./dev docs pages brings it into the documents")
    if not well:
        sys.exit("not every program found what it looks for: see above" + ("; nothing is kept" if wanted.keep else ""))


for ending in (signal.SIGTERM, signal.SIGHUP):  # and the program that is being measured ends with this one
    signal.signal(ending, lambda number, _: sys.exit(128 + number))
try:
    main()
except KeyboardInterrupt:
    sys.exit(130)
