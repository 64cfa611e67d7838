"""Makes docs/machine-calls.md: every call that the machine offers, from the headers in platform/, and where it
differs from Windows, from machine-differences.txt beside this script. Ends with 1 when a call has no comment,
when a difference names no call, and without --write when the page is stale."""
import pathlib
import sys

from declarations import ROOT, declarations, first_sentence, header_purpose
from generated import keep

DIFFERENCES = pathlib.Path(__file__).with_name("machine-differences.txt")
# What is no call of Windows, but the machine's own.
OWN_HEADERS = ["platform/machine.h", "platform/machine_contents.h"]

HEAD = """# The calls of the machine

Made by `docs/scripts/machine_calls.py` from the headers in `platform/`; do not edit it, run `./dev docs`.

A call is named as on Windows and takes what it takes there. The second column is the first words of its comment
in the header, where the rest stands: results, errors, odd inputs. The third says where the call does something
else than on Windows, in a way that a program can see. It is empty where none is known. Calls and flags that are
not here do not exist.
"""


def differences():
    found = {}
    for line in DIFFERENCES.read_text().splitlines():
        if line and not line.startswith("#"):
            names, text = line.split(": ", 1)
            found.update({name.strip(): text for name in names.split(",")})
    return found


def brief(comment):
    text = first_sentence(comment)
    if len(text) < 25 and len(comment) > len(text):
        text += " " + first_sentence(comment[len(text):])
    return text.replace("|", "\\|").replace("<", "&lt;").replace("*.", "\\*.")


def is_own(call):
    return call.header in OWN_HEADERS or call.name().startswith("Machine_")


def row(call, before, different):
    if not call.comment:
        sys.exit(f"{call.header}:{call.line}: {call.name()} has no comment")
    shared = before is not None and before.comment == call.comment
    text = f"See `{before.name()}`." if shared else brief(call.comment)
    mark = "The machine's own." if is_own(call) else different.pop(call.name(), "")
    return f"| `{call.name()}` | {text} | {mark} |"


def page():
    different = differences()
    parts = [HEAD]
    for path in sorted((ROOT / "platform").glob("*.h")):
        calls = declarations(path, "PLATFORM_API")
        if not calls:
            continue
        header = str(path.relative_to(ROOT))
        parts.append(f"\n## `{header}`\n\n{header_purpose(path)}\n\n| Call | What it does | Differs |\n|---|---|---|")
        leader = None
        for call in calls:
            parts.append(row(call, leader, different))
            if leader is None or leader.comment != call.comment:
                leader = call
    if different:
        sys.exit(f"{DIFFERENCES.name} names calls that are not there: {', '.join(sorted(different))}")
    return "\n".join(parts) + "\n"


keep(ROOT / "docs/machine-calls.md", page())
