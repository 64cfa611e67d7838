#!/usr/bin/env bash
# Every header compiles alone. The build shows it of those that a source of the same name includes first.
#   headers.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"

is_shown_by_its_source() {
    local source=${1%.h}.cpp
    [ -f "$source" ] && [ "$(grep -m 1 '^#include' "$source")" = "#include <$1>" ]
}

find . -path ./build -prune -o -path ./.git -prune -o -name '*.h' -print | sed 's|^\./||' | sort |
    while read -r header; do is_shown_by_its_source "$header" || echo "$header"; done |
    xargs -P 2 -I {} sh -c \
        'echo "#include <{}>" | g++ -m32 -msse2 -std=c++20 -Wall -Wextra -Wno-pragmas -Werror -fsyntax-only \
            -I. -isystem /usr/src/googletest/googletest/include -isystem /usr/src/googletest/googlemock/include \
            -x c++ - || { echo "{} does not compile alone"; exit 255; }'
