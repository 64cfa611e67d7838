"""Ends with 1 when a page points at a file of this tree that is not there, or at a heading that a page lacks."""
import re
import sys

from declarations import ROOT

LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
# A path of the tree in backticks: `platform/kernel.h`. Build products and patterns are none.
PATH = re.compile(r"`((?:docs|kelmara|platform|reference_suite|tools|tests|benchmarks|cmake)/[\w./]*\w)`")


def anchors(page):
    headings = re.findall(r"^#+ (.*)$", page.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def broken(page):
    text = page.read_text()
    for target in LINK.findall(text):
        if target.startswith("http"):
            continue
        name, _, anchor = target.partition("#")
        path = page.parent / name if name else page
        if not path.exists() or (anchor and anchor not in anchors(path)):
            yield target
    for name in PATH.findall(text):
        if not (ROOT / name).exists():
            yield name


pages = [*sorted((ROOT / "docs").glob("*.md")), *sorted(ROOT.glob("*.md"))]
problems = [f"{page.relative_to(ROOT)}: {target}" for page in pages for target in broken(page)]
if problems:
    sys.exit("not there:\n" + "\n".join(problems))
