#!/usr/bin/env bash
# Fails if the linker version script names a symbol by its exact name that the
# library does not define (current linkers refuse to link then), or spells a
# C++ runtime's own namespace (its patterns would then match nothing under the
# other runtime). Usage: version-script.sh MAP LIBRARY
set -euo pipefail
map=$1
library=$2
symbols=$(nm -D --defined-only "$library" | awk '{ $1=""; $2=""; sub(/^  /, ""); print }' | c++filt)

status=0
if grep -En '__cxx11|std::__1|std::__ndk1|St7__cxx11|NSt3__1|NSt6__ndk1' "$map"; then
  echo "the version script spells a C++ runtime's namespace (lines above)"
  status=1
fi
while IFS= read -r name; do
  if ! grep -Fxq "$name" <<<"$symbols"; then
    echo "named in the version script but not defined: $name"
    status=1
  fi
done < <(grep -v 'extern "' "$map" | grep -o '"[^"]*"' | tr -d '"')
[ $status -eq 0 ] && echo "version script: every exact name is defined, no runtime-specific name"
exit $status
