"""Makes docs/exported-names.md: every name that the library exports, with the header that tells what it does.

Reads kelmara/kelmara.exports and the headers. Ends with 1 when an exported name stands in no header, when a
function has no comment, when a class and its header have none, and without --write when the page is stale."""
import re
import sys

from declarations import ROOT, declarations, first_sentence, header_purpose
from generated import keep

HEAD = """# Every exported name

Made by `docs/scripts/exported_names.py` from `kelmara/kelmara.exports` and the headers; do not edit it, run
`./dev docs`. `#include <kelmara/kelmara.h>` has them all. Tables of virtual functions and type information are
exported with their classes. A name in several forms stands once. The header tells the rest: results, errors,
who frees, odd inputs. A comment there never repeats the name, and neither does this table.
"""
# The machine calls it when the library is loaded; no header offers it to callers.
ENTRY_POINT = "DllMain"


def exported():
    """{class or "": set of names}"""
    names = {}
    for line in (ROOT / "kelmara/kelmara.exports").read_text().splitlines():
        data = re.match(r"(?:vtable|typeinfo name|typeinfo) for (\w+)", line)
        name = data.group(1) + "::" if data else line.split("(")[0].strip()
        owner, _, member = name.rpartition("::")
        members = names.setdefault(owner, set())
        if member:
            members.add(member)
    return names


def headers():
    paths = [path for path in sorted((ROOT / "kelmara").glob("*/*.h")) if "KELMARA_API" in path.read_text()]
    return paths


def escaped(text):
    return text.replace("|", "\\|").replace("<", "&lt;")


def class_comment(path, name):
    text = path.read_text()
    if text.count("class KELMARA_API") == 1:
        return header_purpose(path)
    found = re.search(rf"((?:^ *///.*\n)+) *class KELMARA_API {name}\b", text, re.M)
    if found:
        return first_sentence(" ".join(line.strip()[3:].strip() for line in found.group(1).splitlines()))
    return header_purpose(path)


def class_row(path, name, members):
    text = re.sub(r"//.*", "", path.read_text())
    missing = [m for m in members if m.lstrip("~").split()[-1].rstrip("*") not in text]
    comment = class_comment(path, name)
    if missing or not comment:
        sys.exit(f"{path}: {name} is without a comment, or {missing} do not stand there")
    listed = ", ".join(f"`{escaped(m)}`" for m in sorted(members, key=str.lower) if m.lstrip("~") != name)
    return f"| class `{name}` | {escaped(comment)} {('Its operations: ' + listed + '.') if listed else ''} |"


def page():
    names = exported()
    functions = names.pop("") - {ENTRY_POINT}
    told = set()
    parts = [HEAD]
    for path in headers():
        rows, leader = [], None
        for call in declarations(path, "KELMARA_API"):
            kind = re.match(r"class KELMARA_API (\w+)", call.text)
            if kind:
                rows.append(class_row(path, kind.group(1), names.pop(kind.group(1), set())))
            elif "static" not in call.text.split("(")[0] and call.name() in functions:
                if not (call.comment or call.section):
                    sys.exit(f"{call.header}:{call.line}: {call.name()} has no comment")
                if f"| `{call.name()}` |" in "\n".join(rows):
                    continue
                shared = leader is not None and leader.name() != call.name() and leader.comment == call.comment
                text = f"See `{leader.name()}`." if shared else escaped(first_sentence(call.comment))
                rows.append(f"| `{call.name()}` | {text} |")
                leader = leader if shared else call
                told.add(call.name())
        names.pop(path.stem, None)
        if rows:
            header = path.relative_to(ROOT)
            parts.append(f"\n## `{header}`\n\n{escaped(header_purpose(path))}\n\n| Name | What it does |\n|---|---|")
            parts += rows
    names = {owner: kept for owner, kept in names.items() if not stands_below_documented(owner)}
    if functions - told or names:
        sys.exit(f"exported, but told in no header: {sorted(functions - told)} {sorted(names)}")
    return "\n".join(parts) + "\n"


def stands_below_documented(owner):
    """A type within a class, or a class of the library's own that an inline function needs."""
    outer = owner.split("::")[0]
    return any(re.search(rf"(class|struct) \w* ?{outer}\b", path.read_text()) and header_purpose(path)
               for path in (ROOT / "kelmara").glob("*/*.h"))


keep(ROOT / "docs/exported-names.md", page())
