#!/bin/bash
# floors.sh SOURCE: the includes of the library keep to the floors that
# ARCHITECTURE.md draws, go in no circle, and no public header includes a
# private one. Of the two rooms on floor 4 neither knows the other. qxsystem.h
# has them all.
set -euo pipefail
cd "$1"

# One line for every include: the including file, the included one.
includes=$(grep -rEo '^#include [<"]qxsystem/[^>"]+' qxsystem --include='*.h' --include='*.cpp' |
  sed -E 's/:#include [<"]/ /')
[[ -n $includes ]] || { echo "no includes found" >&2; exit 1; }

faults=$(awk '
  function floor(path) {
    if (path ~ /^qxsystem\/platform\//) return 0
    if (path ~ /^qxsystem\/core\/(base|nesting|predicate|[a-z]*iter)/) return 2
    if (path ~ /^qxsystem\/core\//) return 1
    if (path ~ /^qxsystem\/util\/hanoi\./) return 1
    if (path ~ /^qxsystem\/(util|numerics|colour)\//) return 3
    if (path ~ /^qxsystem\/qxb\/(qxheader|qxannotate)\./) return 5
    if (path ~ /^qxsystem\/(qxb|interface)\//) return 4
    if (path ~ /^qxsystem\/(json|grid)\//) return 5
    if (path ~ /^qxsystem\/records\//) return 6
    if (path ~ /^qxsystem\/qxsystem\.h$/) return 7
    return 99
  }
  floor($1) < floor($2) { print $1 " includes " $2 ", which stands higher" }
  floor($1) == 99 { print $1 " has no floor" }
  function room(path) { sub(/\/[^\/]*$/, "", path); return path }
  floor($1) == 4 && floor($2) == 4 && room($1) != room($2) { print $1 " includes " $2 ", of the other room" }
  $1 ~ /\.h$/ && $1 !~ /_private\.h$/ && $2 ~ /_private\.h$/ { print $1 " includes the private " $2 }
' <<<"$includes" | sort -u)
circle=$(grep -E '^\S+\.h ' <<<"$includes" | tsort 2>&1 >/dev/null) ||
  faults+=$'\n'"headers include each other in a circle:"$'\n'"$circle"

missing=$(find qxsystem -name '*.h' ! -name '*_private.h' ! -path qxsystem/qxsystem.h |
  grep -vFf <(awk '$1 == "qxsystem/qxsystem.h" { print $2 }' <<<"$includes")) &&
  faults+=$'\n'"qxsystem.h leaves out:"$'\n'"$missing"

[[ -z $faults ]] || { echo "$faults" >&2; exit 1; }
