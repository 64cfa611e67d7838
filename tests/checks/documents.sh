#!/usr/bin/env bash
# The pages of docs/ say what is: layouts are the compiler's, examples the files that are built and run, the
# picture is the include graph's, the figures of times those that were kept, and what is pointed at is there.
# ./dev docs puts them right.
#   documents.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
export PYTHONDONTWRITEBYTECODE=1
for script in docs/scripts/{layouts,examples,performance,links}.py docs/pictures/architecture.py; do
    python3 "$script"
done
