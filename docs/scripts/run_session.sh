#!/usr/bin/env bash
# Types the lines of a transcript that begin with "$ ", "> " going on with the line before, into a shell in an empty
# home, and compares what comes of it with the transcript, or with --write makes it anew.
#   run_session.sh KELMARA INSTALL_SUITE TRANSCRIPT [--write]
set -uo pipefail
transcript=$(realpath "$3") status=0 command='' shown=''
empty_home=$(mktemp -d) && empty_home=$(realpath "$empty_home") || exit 1
readonly transcript empty_home
trap 'rm -rf "$empty_home" "$empty_home.printed"' EXIT
mkdir "$empty_home/.bin"
ln -s "$(realpath "$1")" "$(realpath "$2")" "$empty_home/.bin/"
export HOME=$empty_home PATH=$empty_home/.bin:$PATH
unset KELMARA_MACHINE XDG_DATA_HOME
cd "$empty_home" || exit 1

enter() {
    [ -n "$command" ] || return 0
    printf '%s\n' "$shown"
    eval "(exit $status)"$'\n'"$command" < /dev/null 2>&1
    status=$?
}

while IFS= read -r line <&3; do
    case $line in
        '$ '*) enter; shown=$line command=${line:2} ;;
        '> '*) shown+=$'\n'$line command+=$'\n'${line:2} ;;
    esac
done 3< "$transcript" > "$empty_home.printed"
enter >> "$empty_home.printed"
sed -i "s|$empty_home|/home/you|g" "$empty_home.printed"
if [ "${4:-}" = --write ]; then
    cp "$empty_home.printed" "$transcript"
    exit
fi
diff -u "$transcript" "$empty_home.printed"
