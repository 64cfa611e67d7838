"""Puts the examples into the pages: a code block whose first line names a file, as ```cpp file=docs/examples/x.cpp,
holds that file whole. The files are built and run as tests (docs/CMakeLists.txt). Ends with 1 when a page and its
file differ, unless --write is given, when a file is missing and when an example stands in no page."""
import pathlib
import re
import sys

from declarations import ROOT
from generated import keep

BLOCK = re.compile(r"^(```\w+ file=(\S+)\n)(.*?)^```$", re.M | re.S)

shown = set()


def filled(block):
    path = ROOT / block.group(2)
    if not path.is_file():
        sys.exit(f"a page shows {block.group(2)}, which is not there")
    shown.add(path)
    return block.group(1) + path.read_text() + "```"


for page in sorted([*(ROOT / "docs").glob("*.md"), ROOT / "README.md", ROOT / "CONTRIBUTING.md"]):
    keep(page, BLOCK.sub(filled, page.read_text()))
hidden = [path.name for path in sorted((ROOT / "docs/examples").rglob("*.*")) if path not in shown]
if hidden:
    sys.exit(f"in docs/examples, but in no page: {', '.join(hidden)}")
