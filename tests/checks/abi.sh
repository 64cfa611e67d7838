#!/usr/bin/env bash
# Programs that are built stay usable: the records, virtual tables and calls of the library's exported interface
# are those of kelmara/kelmara.abi.gz. Without Debian's abigail-tools nothing is compared.
#   abi.sh SOURCE_FOLDER BUILD_FOLDER      compares
#   abi.sh --print BUILD_FOLDER            prints what the interface is
set -euo pipefail

if ! command -v abidw > /dev/null || ! command -v abidiff > /dev/null; then
    echo "not compared: abidw and abidiff are missing (Debian's abigail-tools)"
    [ "$1" != --print ]
    exit
fi

# Without what changes although the interface does not: lines, parameters' names, folders.
described() { # LIBRARY
    abidw --exported-interfaces-only --no-show-locs --no-parameter-names --no-corpus-path --no-comp-dir-path \
        --no-elf-needed --no-write-default-sizes --type-id-style hash "$1"
}

if [ "$1" = --print ]; then
    described "$2/lib/libkelmara.so"
    exit
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
gzip -dc "$1/kelmara/kelmara.abi.gz" > "$folder/before.abi"
described "$2/lib/libkelmara.so" > "$folder/now.abi"
if ! abidiff --no-show-locs "$folder/before.abi" "$folder/now.abi"; then
    echo "The binary interface is not that of kelmara/kelmara.abi.gz. docs/versioning.md says what may change; if it"
    echo "is meant: ./dev abi"
    exit 1
fi
