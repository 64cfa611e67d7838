#!/usr/bin/env bash
# The pages of docs/ say what is: layouts are the compiler's, examples the files that are built and run, the
# picture is the include graph's, and what is pointed at is there. ./dev docs puts them right.
#   documents.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
export PYTHONDONTWRITEBYTECODE=1
for script in docs/scripts/layouts.py docs/scripts/examples.py docs/scripts/links.py docs/pictures/architecture.py; do
    python3 "$script"
done
