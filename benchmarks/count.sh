#!/usr/bin/env bash
# Instructions of one operation each, counted by valgrind: they do not depend on what else the machine does.
# count.sh PROGRAM [TEXT]: the operations whose name holds TEXT, or all
set -euo pipefail
program=$1
text=${2:-}
here=$(dirname "$0")
iterations=64
out=$(mktemp)
trap 'rm -f "$out"' EXIT

# Counting is on only inside the program's measured loop.
instructions() { # OPERATION PEER
    valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect=MeasuredLoop \
        "$program" --count "$1" "$2" $iterations 2>&1 >/dev/null | awk '/Collected/ { print $4 }'
}

while read -r operation peer; do
    printf '%s %s\n' "$operation" "$peer" >&2
    printf '%s %s %s\n' "$operation" "$peer" \
        "$(awk -v n="$(instructions "$operation" "$peer")" -v i=$iterations 'BEGIN { printf "%.1f", n / i }')" >>"$out"
done < <("$program" --list --filter "$text")
awk -f "$here/ratios.awk" "$here/targets.txt" "$out"
