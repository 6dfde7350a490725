#!/usr/bin/env bash
# Fails if a class file of the jar is newer than Java 8 or names anything of
# the list (what Android lacks at API level 21), as read from its constant
# pool and bootstrap methods with javap -v.
# Usage: api-level.sh JAR LIST
set -euo pipefail
jar=$1
list=$2
classes=$(jar tf "$jar" | sed -n 's/\.class$//p' | tr / .)
# shellcheck disable=SC2086
pool=$(javap -v -cp "$jar" $classes)
status=0
newer=$(grep -E '^ *major version: ' <<<"$pool" | awk '$3 > 52' || true)
if [ -n "$newer" ]; then
  echo "class files newer than Java 8 (major version 52):"
  echo "$newer" | sort | uniq -c
  status=1
fi
found=$(grep -oFf <(grep -Ev '^(#|$)' "$list") <<<"$pool" | sort | uniq -c || true)
if [ -n "$found" ]; then
  echo "newer than API level 21 (count, name):"
  echo "$found"
  status=1
fi
[ $status -eq 0 ] && echo "$(wc -w <<<"$classes") classes: Java 8 class files, nothing newer than API level 21"
exit $status
