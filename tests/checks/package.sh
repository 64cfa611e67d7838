#!/usr/bin/env bash
# The installed package stands wherever it is moved to: programs find it by CMake and by pkg-config, its own
# programs and modules find its libraries, and nothing in it tells where it was built.
#   package.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
source=$(realpath "$1")
build=$(realpath "$2")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
package=$folder/moved
export KELMARA_MACHINE=$folder/machine
failed=0

complain() { # TEXT, with the matches on standard input
    local found
    found=$(cat)
    if [ -z "$found" ]; then return; fi
    printf '%s\n%s\n' "$1" "$found"
    failed=1
}

said() { readelf -d "$1" 2> /dev/null | sed -nE "s/.*\(($2)\).*\[(.*)\]/\2/p"; } # FILE NAME

cmake --install "$build" --prefix "$folder/first" > "$folder/log"
mv "$folder/first" "$package"

complain "These name the folder of the sources, of the build or of the installation:" < <(
    grep -rlaF -e "$source" -e "$build" -e "$folder/first" "$package" || true)
complain "These look for libraries in a fixed place:" < <(
    find "$package" -type f | while read -r file; do
        for place in $(said "$file" 'RUNPATH|RPATH' | tr ':' ' '); do
            [[ $place == '$ORIGIN'* ]] || echo "$file: $place"
        done
    done)
complain "These headers are the machine's own business:" < <(find "$package/include/kelmara/platform" -mindepth 2)
# A program must not see other records than the library where it has other ideas of file sizes and times.
our_lines() { # MACRO ...
    (cd "$package/include/kelmara" && printf '#include <%s>\n' kelmara/kelmara.h platform/*.h) |
        g++ -m32 -std=c++20 -I "$package/include/kelmara" -E "$@" -x c++ - |
        awk '/^# / { ours = index($3, "include/kelmara/"); next } ours'
}
complain "The headers differ with _FILE_OFFSET_BITS and _TIME_BITS:" < <(
    diff <(our_lines) <(our_lines -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64) || true)

version=$(sed -nE 's/^project\(kelmara VERSION ([0-9]+)\.([0-9]+).*/\1.\2/p' "$source/CMakeLists.txt")
[[ $version == 0.* ]] || version=${version%.*}
for name in kelmara kelmara_platform; do
    soname=lib$name.so.$version
    complain "Not the name that docs/versioning.md gives it, $soname:" < <(
        said "$package/lib/lib$name.so" SONAME | grep -vxF "$soname" || true)
    [ -e "$package/lib/$soname" ] || complain "Missing:" <<< "$soname"
done

complain "Taken as a folder below the prefix:" < <(
    { cmake -S "$source" -B "$folder/fixed" -G Ninja -DCMAKE_INSTALL_LIBDIR=/opt/lib 2>&1 || true; } |
        grep 'CMAKE_INSTALL_LIBDIR is /opt/lib' > /dev/null || echo /opt/lib)

# By CMake, whose compiler is not told of -m32 by anybody but the package.
cmake -S "$source/tests/package" -B "$folder/by_cmake" -G Ninja -DCMAKE_PREFIX_PATH="$package" > "$folder/log"
cmake --build "$folder/by_cmake" > "$folder/log" || { cat "$folder/log"; exit 1; }
"$folder/by_cmake/consumer"

export PKG_CONFIG_PATH=$package/lib/pkgconfig
# shellcheck disable=SC2046 # flags are words
g++ -std=c++20 -Wall -Wextra -Werror "$source/tests/package/consumer.cpp" -o "$folder/consumer" \
    $(pkg-config --cflags --libs kelmara) -Wl,-rpath,"$(pkg-config --variable=libdir kelmara)"
"$folder/consumer"

"$package/bin/kelmara" --version
"$package/bin/install_suite"
complain "On a machine these do not find their libraries in the package:" < <(
    find "$KELMARA_MACHINE" -name 'km*.exe' -o -name 'km*.dll' | while read -r file; do
        LD_TRACE_LOADED_OBJECTS=1 /lib/ld-linux.so.2 "$file" | grep 'not found' | sed "s|^|$file: |" || true
    done)
exit $failed
