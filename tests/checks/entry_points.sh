#!/usr/bin/env bash
# Once bound, each memory entry point is one test and one indirect jump: no register saved, no frame, no call
# but the one that finds the library's data, nothing behind the jump.
#   entry_points.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
failed=0
for name in _Z9ds_mallocl _Z15ds_malloc_clearl _Z10ds_reallocPvl _Z7ds_freePv; do
    # The instructions up to the jump that takes the bound way.
    way=$(objdump -d --no-show-raw-insn --disassemble=$name "$2/lib/libkelmara.so" |
        awk '/^ +[0-9a-f]+:/ { sub(/^ +[0-9a-f]+:[ \t]*/, ""); print; if (/^jmp +\*/) exit }')
    tests=$(grep -cE '^(test|cmp)' <<< "$way" || true)
    branches=$(grep -cE '^j[a-z]+ ' <<< "$way" || true)
    indirect=$(grep -cE '^jmp +\*' <<< "$way" || true)
    other=$(grep -vE '^(test|cmp|je|jne|mov|add|jmp +\*|call .*get_pc_thunk|endbr32)' <<< "$way" || true)
    if [ "$tests" -ne 1 ] || [ "$branches" -ne 2 ] || [ "$indirect" -ne 1 ] || [ -n "$other" ]; then
        printf '%s is more than a test and an indirect jump:\n%s\n' "$name" "$way"
        failed=1
    fi
done
exit $failed
