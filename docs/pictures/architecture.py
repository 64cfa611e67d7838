"""Draws docs/pictures/architecture.svg: the folders of the tree as boxes, each above what it includes.

Everything comes from the #include lines: which folders there are, which layer each stands in, and the arrows. An
arrow that longer ways imply already is not drawn. One is dashed where a source uses what stands above it: the
other's headers need this folder's. Ends with 1 without --write when the picture is stale."""
import collections
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "scripts"))
from generated import keep  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(r"^#include <((?:kelmara|platform|reference_suite|tools)/[^>]+)>", re.M)
# From the top: a title, the folder whose subfolders are its boxes.
BANDS = [("what stands around the library", ["reference_suite", "tools"]), ("the library: libkelmara.so", ["kelmara"]),
         ("the machine: libkelmara_platform.so", ["platform"])]
BOX, HEIGHT, GAP, ROW, MARGIN, TITLE, LANES = 128, 34, 36, 80, 20, 48, 110


def node_of(path):
    parts = path.split("/")
    if parts[0] == "tools":
        return "tools"
    if parts[0] == "reference_suite":
        return "/".join(parts[:2]) if len(parts) > 2 else None
    if len(parts) > 2:
        return "/".join(parts[:2])
    return {"kelmara/kelmara.h": "kelmara/kelmara.h", "kelmara/api.h": None}.get(path, f"{parts[0]}/*.h")


def included(suffixes):
    graph = collections.defaultdict(set)
    for top in [name for _, tops in BANDS for name in tops]:
        for path in sorted((ROOT / top).rglob("*")):
            node = node_of(str(path.relative_to(ROOT)))
            if path.suffix in suffixes and node is not None:
                targets = {node_of(target) for target in INCLUDE.findall(path.read_text())}
                graph[node] |= targets - {node, None}
    # The folders of the machine do what its headers declare: the headers stand above them.
    for node in sorted(graph):
        if node.startswith("platform/") and node != "platform/*.h":
            graph[node].discard("platform/*.h")
            graph["platform/*.h"].add(node)
    return {node: set(targets) for node, targets in graph.items()}


def include_graph():
    """The graph, and apart from it the includes of sources that go up."""
    whole, by_headers = included([".h", ".cpp"]), included([".h"])
    up = [(node, target) for node in sorted(whole) for target in sorted(whole[node])
          if target not in by_headers.get(node, ()) and node in reachable(by_headers, target)
          and not node.startswith("platform/")]
    for node, target in up:
        whole[node].discard(target)
    return whole, up


def reachable(graph, start):
    seen, open_ones = set(), [start]
    while open_ones:
        for target in graph.get(open_ones.pop(), ()):
            if target not in seen:
                seen.add(target)
                open_ones.append(target)
    return seen


def layers(graph):
    """{node: depth}. Folders that include each other share a depth."""
    behind = {node: reachable(graph, node) for node in graph}
    depth = {}

    def depth_of(node):
        if node not in depth:
            circle = {other for other in behind[node] if node in behind[other]} | {node}
            outside = {target for member in circle for target in graph[member]} - circle
            value = 1 + max((depth_of(target) for target in outside), default=-1)
            depth.update({member: value for member in circle})
        return depth[node]

    for node in sorted(graph):
        depth_of(node)
    return depth


def drawn_edges(graph):
    behind = {node: reachable(graph, node) for node in graph}
    edges = []
    for node in sorted(graph):
        for target in sorted(graph[node]):
            others = graph[node] - {target}
            implied = any(target in behind[other] and node not in behind[other]
                          and not (other in behind[target] and target < other) for other in others)
            both_ways = node in graph[target]
            if both_ways and node > target:
                continue
            if not implied or both_ways:
                edges.append((node, target, both_ways))
    return edges


def rows(graph, tops):
    """The boxes of a band from the top, in an order with short arrows."""
    depth = layers(graph)
    by_depth = collections.defaultdict(list)
    for node in sorted(graph):
        if node.split("/")[0] in tops:
            by_depth[depth[node]].append(node)
    return [by_depth[value] for value in sorted(by_depth, reverse=True)]


def order(all_rows, graph):
    place = {}
    for row in all_rows:
        def wish(node):
            above = [place[other] for other in place if node in graph[other]]
            return (sum(above) / len(above) if above else 0, node)
        row.sort(key=wish)
        for index, node in enumerate(row):
            place[node] = (index + 0.5) / len(row)


def svg(graph, up):
    bands = [(title, rows(graph, tops)) for title, tops in BANDS]
    order([row for _, band in bands for row in band], graph)
    widest = max(len(row) for _, band in bands for row in band)
    width = 2 * (MARGIN + LANES) + widest * BOX + (widest - 1) * GAP
    y, places, shapes = MARGIN, {}, []
    for title, band in bands:
        height = TITLE + len(band) * ROW - (ROW - HEIGHT) + 32
        shapes.append(f'<rect class="band" x="{MARGIN}" y="{y}" width="{width - 2 * MARGIN}" height="{height}"/>')
        shapes.append(f'<text class="title" x="{MARGIN + 10}" y="{y + 20}">{title}</text>')
        for index, row in enumerate(band):
            left = (width - len(row) * BOX - (len(row) - 1) * GAP) // 2
            for column, node in enumerate(row):
                places[node] = (left + column * (BOX + GAP), y + TITLE + index * ROW)
        y += height + MARGIN
    arrows = Arrows(places, width)
    drawn = [arrows.draw(node, target, both) for node, target, both in drawn_edges(graph)]
    drawn += [arrows.draw_up(node, target) for node, target in up]
    boxes = [box(node, *places[node]) for node in sorted(places)]
    return "\n".join([head(width, y), *shapes, *drawn, *boxes, "</svg>\n"])


class Arrows:
    """Ways between boxes: curves where nothing is in between, lanes at the sides where something is."""

    def __init__(self, places, width):
        self.places, self.width = places, width
        self.lanes = {"left": 0, "right": 0}

    def draw(self, node, target, both):
        start, end = self.places[node], self.places[target]
        x1, y1, x2, y2 = start[0] + BOX // 2, start[1] + HEIGHT, end[0] + BOX // 2, end[1] - 2
        if start[1] == end[1]:
            deep = 14 + abs(x2 - x1) // 16
            marks = 'marker-start="url(#tip)"' if both else ""
            shift = 8 if x1 < x2 else -8
            return path(f"M{x1 + shift},{y1} C{x1 + shift},{y1 + deep} {x2 - shift},{y1 + deep} {x2 - shift},{y1 + 2}", marks)
        if self.is_free(x1, y1, x2, y2, {node, target}):
            return path(f"M{x1},{y1} C{x1},{y1 + 24} {x2},{y2 - 26} {x2},{y2}")
        lane = self.lane(x1)
        return path(f"M{x1},{y1} V{y1 + 14} H{lane} V{y2 - 16} H{x2} V{y2}")

    def draw_up(self, node, target):
        start, end = self.places[node], self.places[target]
        x1, y1, x2, y2 = start[0] + 14, start[1], end[0] + 14, end[1] + HEIGHT + 2
        return path(f"M{x1},{y1} C{x1},{y1 - 24} {x2},{y2 + 24} {x2},{y2}", 'stroke-dasharray="4 3"')

    def is_free(self, x1, y1, x2, y2, ends):
        for node, (x, y) in self.places.items():
            if node not in ends and y1 < y + HEIGHT // 2 < y2:
                at = x1 + (x2 - x1) * (y + HEIGHT / 2 - y1) / (y2 - y1)
                if x - 6 < at < x + BOX + 6:
                    return False
        return True

    def lane(self, x):
        side = "left" if x < self.width // 2 else "right"
        self.lanes[side] += 1
        inset = MARGIN + 8 * self.lanes[side]
        return inset if side == "left" else self.width - inset


def path(way, more=""):
    return f'<path class="arrow" d="{way}" marker-end="url(#tip)" {more}/>'


def box(node, x, y):
    name = node if node.endswith(".h") else node.split("/")[-1]
    return (f'<rect class="box" x="{x}" y="{y}" width="{BOX}" height="{HEIGHT}" rx="4"/>'
            f'<text class="name" x="{x + BOX // 2}" y="{y + 22}">{name}</text>')


def head(width, height):
    return f"""<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}">
<style>
  svg {{ background: #ffffff; font-family: sans-serif; }}
  .band {{ fill: #f3f5f7; stroke: #c9d1d9; }}
  .title {{ font-size: 13px; fill: #57606a; }}
  .box {{ fill: #ffffff; stroke: #33485e; }}
  .name {{ font-size: 13px; text-anchor: middle; fill: #1f2933; }}
  .arrow {{ fill: none; stroke: #7b8a9a; stroke-width: 1.1; }}
</style>
<defs><marker id="tip" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="7" markerHeight="7" orient="auto-start-reverse">
<path d="M0,0 L8,4 L0,8 z" fill="#7b8a9a"/></marker></defs>"""


keep(ROOT / "docs/pictures/architecture.svg", svg(*include_graph()))
