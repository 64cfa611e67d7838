"""Fills in the tables of records in the pages, between these lines:

    <!-- layout RECORD HEADER -->
    <!-- end of layout -->

The fields and what is said of them come from the header, offsets and sizes from the compiler. Ends with 1 when a
page is stale, unless --write is given."""
import re
import subprocess
import sys
import tempfile

from declarations import ROOT
from generated import keep

MARK = re.compile(r"(<!-- layout (\w+) (\S+) -->\n)(.*?)(<!-- end of layout -->)", re.S)
FIELD = re.compile(r"^[\w:<> ,\*]*?(?:\(\*(\w+)\)\(.*\)|[ \*](\w+)((?:\[[^\]]*\])?))(?: = [^;]*| = \{.*\})?;(?: *// ?(.*))?$")
NOT_FIELDS = re.compile(r"^(struct|class|static|friend|using|inline|enum|KELMARA_INTERNAL|return|virtual|template|operator)\b|\) (const|override)?;")


def body(record, header):
    text = (ROOT / header).read_text()
    found = re.search(rf"^(?:struct|class) (?:\[\[\w+::\w+\]\] |KELMARA_API )?{record}\b[^;{{]*{{\n(.*?)^}};", text, re.M | re.S)
    if not found:
        sys.exit(f"{header} has no {record}")
    return found.group(1).splitlines()


def fields(record, header):
    """[name, what is said of it]"""
    found, depth = [], 0
    for raw in body(record, header):
        line = raw.strip()
        if found and line.startswith("// ") and found[-1][2]:
            found[-1][1] += " " + line[3:]
            continue
        match = None if depth or NOT_FIELDS.search(line) else FIELD.match(line)
        if match:
            found.append([match.group(1) or match.group(2), match.group(4) or "", True])
        elif found:
            found[-1][2] = False
        depth += line.count("{") - line.count("}") if not match else 0
    return [(name, re.sub(r"^offset \d+[,:;]? ?", "", said)) for name, said, _ in found]


def measured(records):
    """{(record, field or ""): (offset, size)}"""
    lines = [f"#include <{header}>" for header in sorted({header for _, header in records})]
    lines += ["#include <cstddef>", "#include <cstdio>", "int main() {"]
    for record, header in records:
        lines.append(f'std::printf("{record} - 0 %zu\\n", sizeof({record}));')
        for name, _ in fields(record, header):
            place = f"offsetof({record}, {name}), sizeof({record}::{name})"
            lines.append(f'std::printf("{record} {name} %zu %zu\\n", {place});')
    with tempfile.TemporaryDirectory() as folder:
        source, program = f"{folder}/layouts.cpp", f"{folder}/layouts"
        open(source, "w").write("\n".join([*lines, "}"]))
        flags = "-m32 -msse2 -std=c++20 -O0 -w -fno-access-control -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64"
        # What inline functions call is not linked: only sizes are asked for.
        subprocess.run(["g++", *flags.split(), f"-I{ROOT}", "-Wl,--unresolved-symbols=ignore-all", source, "-o", program],
                       check=True)
        printed = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    rows = [line.split() for line in printed.splitlines()]
    return {(record, name): (int(offset), int(size)) for record, name, offset, size in rows}


def table(record, header, places):
    size = places[record, "-"][1]
    rows = [f"`{record}`, {size} bytes (`{header}`):\n", "| Offset | Size | Field | |", "|---:|---:|---|---|"]
    end = 0
    for name, said in fields(record, header):
        offset, length = places[record, name]
        if offset - end > 3 and (end or offset > 4):
            sys.exit(f"{header}: a field of {record} in front of {name} was not understood")
        if offset > end:
            gap = "the virtual table's address" if end == 0 else "unused"
            rows.append(f"| {end} | {offset - end} | | {gap} |")
        rows.append(f"| {offset} | {length} | `{name}` | {said} |")
        end = offset + length
    if size - end > 3:
        sys.exit(f"{header}: the last field of {record} was not understood")
    if end < size:
        rows.append(f"| {end} | {size - end} | | unused |")
    return "\n".join(rows) + "\n"


pages = sorted((ROOT / "docs").glob("*.md"))
wanted = sorted({(record, header) for page in pages for _, record, header, _, _ in MARK.findall(page.read_text())})
places = measured(wanted)
for page in pages:
    text = page.read_text()
    if text.count("<!-- layout ") != len(MARK.findall(text)):
        sys.exit(f"{page.name}: a layout without its end")
    keep(page, MARK.sub(lambda m: m.group(1) + table(m.group(2), m.group(3), places) + m.group(5), text))
