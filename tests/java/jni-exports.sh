#!/usr/bin/env bash
# Fails if the JNI library exports anything but native methods.
# Usage: jni-exports.sh LIBRARY
set -euo pipefail
symbols=$(nm -D --defined-only "$1" | awk '{ print $3 }')
unexpected=$(grep -v '^Java_velmo_kvo_lipsyncapi_' <<<"$symbols" || true)
if [ -n "$unexpected" ]; then
  echo "exported but not a native method:"
  echo "$unexpected" | sed 's/^/  /'
  exit 1
fi
echo "JNI library exports: $(wc -l <<<"$symbols") native methods, nothing else"
