#!/usr/bin/env bash
# run.sh LIBRARY LIST [--write]: compares what a shared library exports with the list of it. Of the weak
# symbols, which differ between compilers, the classes' tables count; the versions of a constructor count once.
set -euo pipefail
library=$1 list=$2
exported() { nm -D -C --defined-only "$library" | awk '($2 ~ /^[TDBR]$/ && !/typeinfo/) || /vtable for C/' | cut -d' ' -f3- | LC_ALL=C sort -u; }
if [ "${3:-}" = --write ]; then
    exported >"$list"
else
    diff -u "$list" <(exported) && echo "$(wc -l <"$list") symbols as listed"
fi
