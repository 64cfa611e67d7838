#!/usr/bin/env bash
# Types the lines of a transcript that begin with "$ ", "> " going on with the line before, into a shell in an empty
# home, and compares what comes of it with the transcript, or with --write makes it anew.
#   run_session.sh KELMARA INSTALL_SUITE TRANSCRIPT [--write]
set -uo pipefail
transcript=$(realpath "$3") status=0 command='' shown=''
HOME=$(realpath "$(mktemp -d)")
trap 'rm -rf "$HOME" "$HOME.printed"' EXIT
mkdir "$HOME/.bin"
ln -s "$(realpath "$1")" "$(realpath "$2")" "$HOME/.bin/"
export HOME PATH=$HOME/.bin:$PATH
unset KELMARA_MACHINE XDG_DATA_HOME
cd "$HOME" || exit 1

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
done 3< "$transcript" > "$HOME.printed"
enter >> "$HOME.printed"
sed -i "s|$HOME|/home/you|g" "$HOME.printed"
if [ "${4:-}" = --write ]; then
    cp "$HOME.printed" "$transcript"
    exit
fi
diff -u "$transcript" "$HOME.printed"
