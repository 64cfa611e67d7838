#!/usr/bin/env bash
# What the release build was given against misuse is really in what was built: every library, module and program,
# those of the tests too.
#   hardening.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$2"
failed=0
complain() { echo "$1: $2" && failed=1; }

mapfile -t files < <(find . -name CMakeFiles -prune -o -type f -size +0 \( -perm -u+x -o -name '*.so*' \) -print | sort)
checked=()
for file in "${files[@]}"; do
    [ "$(head -c 4 "$file" | tr -d '\0')" = $'\177ELF' ] || continue
    checked+=("$file")
    segments=$(readelf -lW "$file")
    dynamic=$(readelf -dW "$file")
    [[ $segments == *GNU_RELRO* ]] || complain "$file" "its tables of addresses stay writable"
    [[ $dynamic == *BIND_NOW* || $dynamic == *"Flags: NOW"* ]] || complain "$file" "symbols are bound late"
    [[ $dynamic != *TEXTREL* ]] || complain "$file" "code is written to when it is loaded"
    [[ $(head -4 <<< "$segments") == *"DYN"* ]] || complain "$file" "is at a fixed address"
    grep -qE '^ *GNU_STACK' <<< "$segments" || complain "$file" "does not say that its stack is data"
    if grep -qE '^ +[A-Z_]+ +(0x[0-9a-f]+ +){5}R?WE ' <<< "$segments"; then
        complain "$file" "has a segment to write to and to run"
    fi
done
for kind in lib/libkelmara.so. lib/libkelmara_platform.so. suite/ bin/ tests/test_ tests/modules/; do
    [[ " ${checked[*]}" == *" ./$kind"* ]] || complain "$kind" "nothing of it was built, or found"
done
# Guard words and checked copies show only where code has arrays on its stack and copies to them: in the two
# libraries both, in what else is shipped the guard words, but for a module that has no such array.
for file in "${checked[@]}"; do
    [[ $file =~ ^\./(lib|suite|bin)/ && $file != ./suite/kmmemory.so ]] || continue
    names=$(readelf -W --dyn-syms "$file")
    [[ $names == *__stack_chk_fail* ]] || complain "$file" "has no guard words on the stack"
    [[ $file != ./lib/libkelmara* || $names == *_chk@* ]] || complain "$file" "does not check its copies"
done
exit $failed
