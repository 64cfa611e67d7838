#!/usr/bin/env bash
# Makes the one source file of SQLite, for this machine's 32 bits, out of Debian's source package.
#   sqlite.sh FOLDER
set -euo pipefail
mkdir -p "$1"
cd "$1"
[ ! -f sqlite3.c ] || exit 0
mkdir -p lists/partial sources
cat > sources/debian.sources <<'SOURCES'
Types: deb-src
URIs: http://deb.debian.org/debian
Suites: bookworm
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
SOURCES
only=(-q -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$PWD/sources" -o Dir::State::lists="$PWD/lists")
apt-get "${only[@]}" update
apt-get "${only[@]}" source sqlite3
mkdir -p made
(cd made && ../sqlite3-*/configure --disable-tcl --disable-readline && make sqlite3.c) > made.log 2>&1
mv made/sqlite3.h made/sqlite3.c .
rm -rf made sources lists sqlite3-* sqlite3_*
