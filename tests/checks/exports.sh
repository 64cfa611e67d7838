#!/usr/bin/env bash
# The library exports what kelmara/kelmara.exports lists, no more and no less.
#   exports.sh SOURCE_FOLDER BUILD_FOLDER      compares
#   exports.sh --print BUILD_FOLDER            prints what is exported
set -euo pipefail

exported() { nm -DC --defined-only "$1/lib/libkelmara.so" | cut -d' ' -f3- | LC_ALL=C sort -u; }

if [ "$1" = --print ]; then
    exported "$2"
    exit 0
fi
if ! diff -u "$1/kelmara/kelmara.exports" <(exported "$2"); then
    echo "The exported names are not those of kelmara/kelmara.exports. If that is meant: ./dev exports"
    exit 1
fi
if exported "$2" | grep -E '^(std::|__gnu_cxx|operator (new|delete)|(vtable|typeinfo|typeinfo name) for std)'; then
    echo "These are the C++ runtime's: kelmara/kelmara.map keeps them inside."
    exit 1
fi
