#!/usr/bin/env bash
# Every exported name, of the library and of the machine, stands in a header with a comment and in the tables of
# docs/: exported-names.md and machine-calls.md. ./dev docs makes both.
#   documented.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
export PYTHONDONTWRITEBYTECODE=1
python3 docs/scripts/exported_names.py
python3 docs/scripts/machine_calls.py

failed=0
while read -r name; do
    if ! grep -qF "| \`$name\` |" docs/machine-calls.md; then
        echo "libkelmara_platform.so exports $name, which no header in platform/ declares with PLATFORM_API"
        failed=1
    fi
done < <(nm -D --defined-only "$2/lib/libkelmara_platform.so" | cut -d' ' -f3 | grep -v '^_Z')
exit $failed
