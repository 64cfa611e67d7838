#!/usr/bin/env bash
# Programs that are built stay usable: records, classes and virtual tables of the public headers are laid out as
# kelmara/kelmara.abi has them. (Calls are held by exports.sh: their names tell what they take.) Asked of a source
# that does nothing but include the headers: the optimised library no longer knows the interfaces and records
# that it only hands on. Without Debian's abigail-tools nothing is compared.
#   abi.sh SOURCE_FOLDER BUILD_FOLDER      compares
#   abi.sh --print SOURCE_FOLDER           prints what the headers lay down
set -euo pipefail

if ! command -v abidw > /dev/null; then
    echo "not compared: abidw is missing (Debian's abigail-tools)"
    [ "$1" != --print ]
    exit
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

compile_headers() { # All types in the debug information, also those that nothing uses.
    (
        printf '#include <%s>\n' kelmara/kelmara.h platform/*.h
        echo 'extern "C" { int variable; void call() {} }' # without a symbol of each kind abidw reads nothing
    ) | g++ -m32 -msse2 -std=c++20 -g -femit-class-debug-always -fno-eliminate-unused-debug-types \
        -shared -fPIC -nostdlib -I. "-ffile-prefix-map=$PWD=." -x c++ - -o "$folder/headers.so" # or places sort otherwise
}

laid_down() ( # SOURCE_FOLDER
    cd "$1"
    compile_headers
    abidw --load-all-types --no-show-locs --no-parameter-names --no-corpus-path --no-comp-dir-path \
        --no-elf-needed --no-write-default-sizes --type-id-style hash "$folder/headers.so"
)

if [ "$1" = --print ]; then
    laid_down "$2"
    exit
fi
laid_down "$1" > "$folder/now.abi"
if ! diff -U 4 "$1/kelmara/kelmara.abi" "$folder/now.abi"; then
    echo "The headers lay out something else than kelmara/kelmara.abi. docs/versioning.md says what may change; if it"
    echo "is meant: ./dev abi"
    exit 1
fi
