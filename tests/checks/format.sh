#!/usr/bin/env bash
# All sources are in the one format; ./dev format puts them there.
#   format.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
find kelmara platform reference_suite tools tests benchmarks fuzz \( -name '*.h' -o -name '*.cpp' \) 2>/dev/null |
    xargs clang-format --dry-run -Werror
