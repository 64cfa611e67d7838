"""Makes the tables of docs/performance.md and docs/pictures/performance.svg out of benchmarks/baseline.json and
benchmarks/costs.txt. Ends with 1 when one of them is stale, unless --write is given, and when no sentence says why a row
is slower than its peer by more than 3 in 100, misses what was wanted of it, or grows faster than its size."""
import fnmatch
import html
import json
import math
import re
import sys

from declarations import ROOT
from figures import time_of
from generated import keep

SLOWER = 1.03  # than a peer, to need a reason
STEEP = 1.3  # an exponent, of all sizes or of the two greatest, to need one
BASELINE = json.loads((ROOT / "benchmarks/baseline.json").read_text())
ROWS = [row for row in BASELINE["rows"] if "peer" in row]
ALONE = [row for row in BASELINE["rows"] if "allowed" in row]
GROWTH = [row for row in BASELINE["rows"] if "points" in row]
LABELS, BARS, FIGURES, ROW, HEAD = 350, 460, 90, 18, 26  # pixels
DECADES = (-2, 2)  # of the axis


def costs():
    lines = (ROOT / "benchmarks/costs.txt").read_text().splitlines()
    return [[part.strip() for part in line.split("|")] for line in lines if line and not line.startswith("#")]


def reason(row):
    """A sentence on growth is for growth alone."""
    wanted = (row["component"], row["what"], row.get("peer", "growth" if "points" in row else "alone"))
    for *names, sentence in costs():
        if ("points" in row) == (names[-1] == "growth") and all(map(fnmatch.fnmatchcase, wanted, names)):
            return sentence
    sys.exit(f"benchmarks/costs.txt does not say why: {' | '.join(wanted)}")


def missed(row):
    """What a row has more of than it should, in words; empty when it keeps its limit."""
    if "allowed" in row:
        return f", more than the {time_of(row['allowed'])} allowed" if row["ours"] > row["allowed"] else ""
    found = row["exponent"] if "points" in row else row["ratio"]
    return f", more than the {row['wanted']:g} wanted" if found > row["wanted"] else ""


def is_slow(row):
    return row.get("ratio", 0) > SLOWER or missed(row) != ""


def is_steep(row):
    return max(row["exponent"], row["last"]) > STEEP or missed(row) != ""


def comparisons():
    lines = ["| Component | Work | Ours | Peer | Its | Ratio |", "|---|---|---:|---|---:|---:|"]
    for row in ROWS:
        ratio = (f"**{row['ratio']:.2f}**" if row["ratio"] > SLOWER else f"{row['ratio']:.2f}") + missed(row)
        lines.append(f"| {row['component']} | {row['what']} | {time_of(row['ours'])} | {row['peer']} | "
                     f"{time_of(row['peers'])} | {ratio} |")
    lines += ["", "What has no peer, and the time that it may take:", "", "| Component | Work | Ours | Allowed |", "|---|---|---:|---:|"]
    lines += [f"| {row['component']} | {row['what']} | {time_of(row['ours'])}{missed(row)} | {time_of(row['allowed'])} |" for row in ALONE]
    return lines


def slower():
    """Rows of one component that share a sentence share a line."""
    found = {}
    for row in filter(is_slow, ROWS + ALONE):
        found.setdefault((row["component"], reason(row)), []).append(row)
    figure = lambda row: f"{row['ratio']:.2f}" if "ratio" in row else time_of(row["ours"])  # noqa: E731
    told = lambda rows: ", ".join(f"{row['what']} ({figure(row)}{missed(row)})" for row in rows)  # noqa: E731
    return [f"- {component}: {told(rows)}. {sentence}" for (component, sentence), rows in found.items()]


def growth():
    lines = ["| Component | Work | At the least | At the most | Exponent | At the end |", "|---|---|---:|---:|---:|---:|"]
    for row in GROWTH:
        ends = [f"{size:,}: {time_of(taken)}" for size, taken in (row["points"][0], row["points"][-1])]
        lines.append(f"| {row['component']} | {row['what']} | {ends[0]} | {ends[1]} | {row['exponent']:.2f}{missed(row)} | {row['last']:.2f} |")
    steep = [f"- {row['component']}: {row['what']}. {reason(row)}" for row in GROWTH if is_steep(row)]
    return lines + (["", "Where a time grows faster than the size:", "", *steep] if steep else [])


def machine():
    has = BASELINE["machine"]
    return [f"The figures below: {has['processor']}, {has['processors']} processors, Linux {has['kernel']}, {has['compiler']}, 32 bits."]


def place(ratio):
    """Where on the axis a ratio stands."""
    part = (math.log10(ratio) - DECADES[0]) / (DECADES[1] - DECADES[0])
    return LABELS + BARS * min(max(part, 0), 1)


def bar(row, y):
    one, at = place(1), place(row["ratio"])
    kind = "slow" if row["ratio"] > SLOWER else "fast"
    text = lambda kind, x, words: f'<text class="{kind}" x="{x:.0f}" y="{y + 13}">{html.escape(words)}</text>'  # noqa: E731
    return [text("what", LABELS - 8, row["what"]), text("ratio", LABELS + BARS + FIGURES - 8, f"{row['ratio']:.2f}"),
            f'<rect class="{kind}" x="{min(one, at):.1f}" y="{y + 3}" width="{max(abs(at - one), 1):.1f}" height="{ROW - 6}"/>']


def svg():
    shapes, y, title = [], 56, None
    for row in ROWS:
        if (row["component"], row["peer"]) != title:
            title = (row["component"], row["peer"])
            shapes.append(f'<text class="title" x="12" y="{y + 19}">{html.escape(row["component"])}, beside {html.escape(row["peer"])}</text>')
            y += HEAD
        shapes += bar(row, y)
        y += ROW
    width, height = LABELS + BARS + FIGURES, y + 16
    axis = []
    for decade in range(DECADES[0], DECADES[1] + 1):
        x, kind = place(10 ** decade), "one" if decade == 0 else "axis"
        axis.append(f'<line class="{kind}" x1="{x:.1f}" y1="48" x2="{x:.1f}" y2="{y + 4}"/>')
        axis.append(f'<text class="mark" x="{x:.1f}" y="42">{10 ** decade:g}</text>')
    return f"""<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}">
<style>
  text {{ font-family: sans-serif; font-size: 12px; fill: #1f2933; }}
  .ground {{ fill: #ffffff; }}
  .title {{ font-weight: bold; }}
  .what, .ratio {{ text-anchor: end; }}
  .mark {{ text-anchor: middle; }}
  .fast {{ fill: #2f7fb8; }}
  .slow {{ fill: #d9822b; }}
  .axis {{ stroke: #c9d1d9; }}
  .one {{ stroke: #57606a; stroke-width: 1.5; }}
  @media (prefers-color-scheme: dark) {{
    text {{ fill: #e6edf3; }}
    .ground {{ fill: #0d1117; }}
    .axis {{ stroke: #30363d; }}
    .one {{ stroke: #9da7b3; }}
    .fast {{ fill: #58a6ff; }}
  }}
</style>
<rect class="ground" width="{width}" height="{height}"/>
<text x="12" y="20">Our time as a multiple of the peer's: left of 1 faster, right of 1 slower. The axis is logarithmic.</text>
""" + "\n".join([*axis, *shapes, "</svg>\n"])


def fill(text, name, lines):
    found = re.subn(rf"(<!-- {name} -->\n).*?(<!-- end of {name} -->)", lambda m: m.group(1) + "\n".join(lines) + "\n" + m.group(2), text, flags=re.S)
    if found[1] != 1:
        sys.exit(f"performance.md: no place for {name}")
    return found[0]


page = ROOT / "docs/performance.md"
text = page.read_text()
for name, lines in (("machine", machine()), ("comparisons", comparisons()), ("slower", slower()), ("growth", growth())):
    text = fill(text, name, lines)
keep(page, text)
keep(ROOT / "docs/pictures/performance.svg", svg())
