#!/usr/bin/env bash
# All sources are in the one format; ./dev format puts them there.
#   format.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
find . -path ./build -prune -o -path ./.git -prune -o \( -name '*.h' -o -name '*.cpp' \) -print |
    xargs clang-format --dry-run -Werror
