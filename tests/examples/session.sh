#!/bin/bash
# session.sh BIN DATA WORK SESSION: runs the commands of a session, as a shell in
# which the programs of BIN are known and the files of DATA stand, and compares
# what comes of them with what the session says.
#
# A command stands behind "$ ". Below it are the lines of its standard output
# behind ">", those of its standard error behind "!", and its status behind "=",
# if it is not 0. The text of a release is shown as "RELEASE". With QX_RECORD in
# the environment the session is written anew; then read it.
set -uo pipefail

bin=$1 work=$3 session=$4
rm -rf "$work" && mkdir -p "$work" && cp "$2"/* "$work" || exit 1
export PATH=$bin:$PATH LC_ALL=C
unset COLUMNS

mark() { sed -E 's/[0-9]+(\.[0-9]+){3}/RELEASE/; s/^/'"$1"'/' "$2"; }

play() {
  local line status out=$work.out err=$work.err
  while IFS= read -r line; do
    [[ $line == [\>!=]* ]] && continue
    printf '%s\n' "$line"
    [[ $line == '$ '* ]] || continue
    (cd "$work" && eval "${line:2}") >"$out" 2>"$err" </dev/null
    status=$?
    mark '>' "$out"
    mark '!' "$err"
    [[ $status -eq 0 ]] || echo "=$status"
  done <"$session"
}

play >"$work.played"
[[ -z ${QX_RECORD:-} ]] || cp "$work.played" "$session"
diff -u "$session" "$work.played"
