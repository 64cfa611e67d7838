#!/usr/bin/env bash
# Runs an example on a fresh machine with the suite on it, and compares what it prints with what its page says.
#   run_example.sh INSTALL_SUITE EXPECTED PROGRAM [ARGUMENT ...]
set -euo pipefail
install_suite=$1 expected=$2
shift 2
KELMARA_MACHINE=$(mktemp -d)
export KELMARA_MACHINE
trap 'rm -rf "$KELMARA_MACHINE"' EXIT
"$install_suite" > /dev/null
diff -u "$expected" <("$@" < /dev/null; echo "exit code $?")
