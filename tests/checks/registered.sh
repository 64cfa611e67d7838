#!/usr/bin/env bash
# Every test that is written is run: each TEST in a file of tests/ is one of CTest's, and none is disabled. Only
# what needs root may say that it was skipped without it.
#   registered.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
known=$(ctest --test-dir "$2" -N)
failed=0
count=0
while read -r suite name; do
    count=$((count + 1))
    if ! grep -qF "$suite.$name" <<< "$known"; then
        echo "not run: $suite.$name"
        failed=1
    fi
done < <(find tests -name '*.cpp' -exec cat {} + | tr '\n' ' ' |
    grep -oE '\bTEST(_F|_P)?\([[:space:]]*[A-Za-z0-9_]+,[[:space:]]*[A-Za-z0-9_]+' | sed -E 's/TEST(_F|_P)?\([[:space:]]*//; s/,[[:space:]]*/ /')
if grep -rnE '\b(TEST|TEST_F|TEST_P)\([^)]*DISABLED_|GTEST_SKIP' tests --include='*.cpp' |
    grep -vE ':[[:space:]]*if \(geteuid\(\) != 0\) GTEST_SKIP\(\)'; then
    echo "these are switched off"
    failed=1
fi
[ "$count" -gt 0 ] || failed=1
exit $failed
