#!/bin/bash
# typical_run_test.sh PROGRAM WORK: typical_run gives the expected account of
# small.sdf, and tells faults of its input with their place and status 1.
set -uo pipefail

data=$(cd "$(dirname "$0")" && pwd)/data
program=$1
rm -rf "$2" && mkdir -p "$2" && cd "$2" || exit 1
failures=0

fail() {
  echo "FAILED: $*" >&2
  failures=$((failures + 1))
}

if "$program" "$data/small.sdf" . >account.txt; then
  diff "$data/small.account.txt" account.txt || fail "the account differs"
else
  fail "small.sdf: status $?"
fi

# refuses FILE TEXT: the message has the text, the status is 1.
refuses() {
  local message status
  message=$("$program" "$1" . 2>&1)
  status=$?
  [[ $status -eq 1 && $message == *"$2"* ]] || fail "$1: status $status, '$message', not '$2'"
}

# Molecule 1 of small.sdf is water: header and counts in lines 1 to 4, atoms to
# 7, bonds to 9, "M  END" in line 10, data fields from line 11 on.
cut_after() { head -n "$1" "$data/small.sdf" >"cut$1.sdf"; }
edit() { sed "$1" "$data/small.sdf" >"$2"; }

refuses missing.sdf "missing.sdf: cannot be read"
refuses . ".: cannot be read"
: >empty.sdf
refuses empty.sdf "empty.sdf: no molecules"
cp "$program" program.sdf
refuses program.sdf "line 4, molecule 1: no counts line"
cut_after 2
refuses cut2.sdf "line 2, molecule 1: the file ends in the header"
cut_after 6
refuses cut6.sdf "line 6, molecule 1: the molecule ends after 2 of 3 atoms"
cut_after 8
refuses cut8.sdf "line 8, molecule 1: the molecule ends after 1 of 2 bonds"
cut_after 9
refuses cut9.sdf "line 9, molecule 1: the molecule ends without 'M  END'"
cut_after 13
refuses cut13.sdf "line 13, molecule 1: the file ends within the molecule's data"
edit '4s/V2000/V3000/' version.sdf
refuses version.sdf "line 4, molecule 1: a V3000 molecule"
edit '5s/-0.2391/   x   /' coordinate.sdf
refuses coordinate.sdf "line 5, molecule 1: no coordinate in columns 1 to 10"
edit '6s/ H / Hx/' element.sdf
refuses element.sdf "line 6, molecule 1: unknown element 'Hx'"
edit '8s/^  1  2/  1  4/' bond.sdf
refuses bond.sdf "line 8, molecule 1: a bond between the atoms 1 and 4 of 3"
edit '11s/<Formula>/<>/' field.sdf
refuses field.sdf "line 11, molecule 1: a data field without a name"

[[ $failures -eq 0 ]]
