"""Hands a header to Doxygen: the opening comment as the file's and its classes' own, remarks behind fields as
theirs, and what looks like a command, a tag or a link in a comment as plain text, for the headers have none."""
import re
import sys

SPECIAL = re.compile(r"([\\@<>&$#%])")


def plain(text):
    """In indented examples nothing needs an escape."""
    if text.startswith("    "):
        return text
    parts = [SPECIAL.sub(r"\\\1", part) for part in text.split("`")]
    if len(parts) % 2 == 0:  # a lone backtick
        return "`".join(parts)
    return "".join(f"<code>{part}</code>" if i % 2 else part for i, part in enumerate(parts))


def begins_example(text, before):
    """Markdown takes it for one only behind an empty line."""
    return text.startswith("    ") and before.strip() and not before.startswith("    ")


def opening(lines):
    """How many lines the header's opening comment has, behind #pragma once."""
    start = next((i for i, line in enumerate(lines) if line.startswith("//")), None)
    if start is None:
        return 0, 0
    end = start
    while end < len(lines) and lines[end].startswith("//"):
        end += 1
    return start, end


lines = open(sys.argv[1], encoding="utf-8").read().splitlines()
start, end = opening(lines)
for number, line in enumerate(lines):
    if start <= number < end:
        # The file's comment needs its command.
        mark = "/// \\file\n" if number == start else ""
        mark += "///\n" if number > start and begins_example(line[3:], lines[number - 1][3:]) else ""
        print(f"{mark}///{' ' if line[2:].strip() else ''}{plain(line[3:])}")
    elif line.lstrip().startswith("///"):
        indent = line[: len(line) - len(line.lstrip())]
        text = line.lstrip()[3:]
        print(f"{indent}///{' ' if text.strip() else ''}{plain(text[1:])}")
    elif re.search(r"[;,}] +// ", line) and not line.lstrip().startswith("//"):
        code, remark = re.split(r" +// ", line, maxsplit=1)
        print(f"{code} ///< {plain(remark)}")
    else:
        print(line)
