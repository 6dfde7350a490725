#!/usr/bin/env bash
# Fails if a class file of the jar names anything of the list (what Android
# lacks at API level 21), as read from its constant pool and bootstrap
# methods with javap -v.
# Usage: api-level.sh JAR LIST
set -euo pipefail
jar=$1
list=$2
classes=$(jar tf "$jar" | sed -n 's/\.class$//p' | tr / .)
# shellcheck disable=SC2086
pool=$(javap -v -cp "$jar" $classes)
found=$(grep -oFf <(grep -Ev '^(#|$)' "$list") <<<"$pool" | sort | uniq -c || true)
if [ -n "$found" ]; then
  echo "newer than API level 21 (count, name):"
  echo "$found"
  exit 1
fi
echo "$(wc -w <<<"$classes") classes: nothing newer than API level 21"
