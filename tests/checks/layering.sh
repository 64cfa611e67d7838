#!/usr/bin/env bash
# The layers: arrows point down only, and the library has no operating system and no heap behind its back.
#   layering.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
failed=0

complain() { # TEXT, with the matches on standard input
    local found
    found=$(cat)
    if [ -z "$found" ]; then return; fi
    printf '%s\n%s\n' "$1" "$found"
    failed=1
}

code() { find "$1" -name '*.h' -o -name '*.cpp'; }

# Parts of the C++ library that the library may use: none of them allocates.
plain='algorithm|array|atomic|bit|climits|cmath|concepts|cstddef|cstdint|cstdarg|cstdio|cstdlib|cstring|ctime|exception|initializer_list|limits|new|optional|tuple|type_traits|utility|emmintrin\.h'

complain "kelmara/ includes what is not its own, the machine's public headers or a plain part of the C++ library:" < <(
    grep -nE '#include' $(code kelmara) | grep -vE "#include <(kelmara/.*|platform/[a-z_]+\.h|($plain))>")
complain "The machine includes what stands above it:" < <(
    grep -nE '#include <(kelmara|reference_suite|tests)/' $(code platform))
complain "kelmara/ uses types that allocate on their own:" < <(
    grep -nE 'std::(string|vector|map|unordered_map|function|list|deque|set|ostringstream|stringstream|[io]?fstream|cout|cerr|shared_ptr|unique_ptr|make_unique)\b' $(code kelmara))
complain "Includes are written from the root, in angle brackets:" < <(
    grep -nE '#include ("|<\.\.)' $(code kelmara) $(code platform) $(code tests))

exit $failed
