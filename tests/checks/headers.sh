#!/usr/bin/env bash
# Every header compiles alone.
#   headers.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
find . -path ./build -prune -o -path ./.git -prune -o -name '*.h' -print | sed 's|^\./||' | sort |
    xargs -P 2 -I {} sh -c \
        'echo "#include <{}>" | g++ -m32 -msse2 -std=c++20 -Wall -Wextra -Wno-pragmas -Werror -fsyntax-only \
            -I. -isystem /usr/src/googletest/googletest/include -isystem /usr/src/googletest/googlemock/include \
            -x c++ - || { echo "{} does not compile alone"; exit 255; }'
