#!/usr/bin/env python3
"""What the tests run of the libraries, out of gcovr's JSON: a table by folder, and the passages that none runs.

    coverage.py FILE            lines and branches by folder
    coverage.py FILE FOLDER     and each passage of the folder that was not run, FILE:FIRST-LAST
"""
import collections
import json
import sys


def folder_of(path):
    return "/".join(path.split("/")[:2]) if path.count("/") > 1 else path.split("/")[0]


def counts(file):
    lines = [line for line in file["lines"] if not line.get("gcovr/noncode")]
    branches = [branch for line in lines for branch in line["branches"] if not branch.get("throw")]
    return (len(lines), sum(line["count"] > 0 for line in lines),
            len(branches), sum(branch["count"] > 0 for branch in branches))


def share(part, whole):
    return f"{100 * part / whole:5.1f} %" if whole else "      -"


def print_table(files):
    folders = collections.defaultdict(lambda: [0, 0, 0, 0])
    for file in files:
        for name in (folder_of(file["file"]), file["file"].split("/")[0] + ", all"):
            folders[name] = [a + b for a, b in zip(folders[name], counts(file))]
    print("| Folder | Lines | run | Branches | taken |\n|---|---:|---:|---:|---:|")
    for name, (lines, run, branches, taken) in sorted(folders.items()):
        print(f"| {name} | {lines:,} | {share(run, lines)} | {branches:,} | {share(taken, branches)} |")


def passages(file):
    first = last = None
    for line in sorted(file["lines"], key=lambda each: each["line_number"]):
        if line["count"] == 0 and not line.get("gcovr/noncode"):
            first, last = first or line["line_number"], line["line_number"]
        elif first:
            yield first, last
            first = None
    if first:
        yield first, last


def main():
    with open(sys.argv[1]) as stream:
        files = sorted(json.load(stream)["files"], key=lambda file: file["file"])
    print_table(files)
    for folder in sys.argv[2:]:
        for file in files:
            if file["file"].startswith(folder.rstrip("/") + "/"):
                for first, last in passages(file):
                    print(f"{file['file']}:{first}" + (f"-{last}" if last > first else ""))


main()
