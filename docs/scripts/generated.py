"""What a script makes and what is checked in are the same: written by --write, compared otherwise."""
import difflib
import sys


def keep(path, text):
    """Ends the script with 1 when the file is stale and --write was not given."""
    old = path.read_text() if path.exists() else ""
    if old == text:
        return
    if "--write" in sys.argv[1:]:
        path.write_text(text)
        print(f"written: {path.name}")
        return
    lines = difflib.unified_diff(old.splitlines(), text.splitlines(), "checked in", "as it would be", lineterm="", n=0)
    print("\n".join(list(lines)[:20]))
    print(f"{path} is stale: ./dev docs makes it anew")
    sys.exit(1)
