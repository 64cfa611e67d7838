"""Reads the declarations of the headers, each with the comment that tells what it does.

A comment of `///` lines belongs to the declaration behind it, and to those that follow without a blank line.
"""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
SECTION = re.compile(r"// --- (.*?) -+$|// --- (.*)$")


class Declaration:
    def __init__(self, header, line, text, comment, section):
        self.header = header  # from the root
        self.line = line
        self.text = text  # on one line, up to the semicolon or the brace
        self.comment = comment  # on one line, empty if there is none
        self.section = section

    def name(self):
        before = re.split(r"\(", self.text, maxsplit=1)[0]
        before = before.split("=")[0]
        return re.findall(r"\w+", before)[-1]


def header_purpose(path):
    """The first sentence of a header's opening comment."""
    lines = []
    for line in path.read_text().splitlines():
        if line.startswith("//"):
            if not line[2:].strip():
                break
            lines.append(line[2:].strip())
        elif lines:
            break
    return first_sentence(" ".join(lines))


def first_sentence(text):
    text = re.sub(r"\s+", " ", text).strip()
    end = re.search(r"(?<![0-9])\.(?= |$)", text)
    return text[: end.start() + 1] if end else text


def declarations(path, mark):
    """All declarations of a header that begin with a mark, as PLATFORM_API."""
    header = str(path.relative_to(ROOT))
    comment, comment_open, section, found = [], False, "", []
    lines = path.read_text().splitlines()
    at = 0
    while at < len(lines):
        line = lines[at].strip()
        heading = SECTION.match(line)
        if heading:
            section = (heading.group(1) or heading.group(2)).strip()
            comment, comment_open = [], False
        elif line.startswith("///"):
            if not comment_open:
                comment = []
            comment.append(line[3:].strip())
            comment_open = True
        elif not line:
            comment, comment_open = [], False
        else:
            comment_open = False
            start = at
            if re.search(rf"\b{mark}\b", line) and not line.startswith("#"):
                text = line
                while not re.search(r"[;{]", text) and at + 1 < len(lines):
                    at += 1
                    text += " " + lines[at].strip()
                text = re.split(r"[;{]", text)[0]
                found.append(Declaration(header, start + 1, text.strip(), " ".join(comment), section))
        at += 1
    return found
