#!/usr/bin/env bash
# Installs the build tree and the example application into a prefix, copies
# the prefix to another directory, deletes the first, and runs the three
# tools and the example from the copy against the simulator: an installed
# tree must work wherever it is unpacked, with no help from the loader's
# environment. Usage: relocated-prefix.sh CMAKE BUILD_DIR SOURCE_DIR VERSION [CMAKE_ARG...]
# The CMAKE_ARGs configure the example as the library was (toolchain).
set -euo pipefail
cmake=$1 build=$2 source=$3 version=$4
shift 4
unset LD_LIBRARY_PATH

. "$source/scripts/servers.sh"
work=$(mktemp -d /tmp/akvo-relocate.XXXXXX)
simulator=
cleanup() {
  stop_server "$simulator"
  rm -rf "$work"
}
trap cleanup EXIT

"$cmake" --install "$build" --prefix "$work/installed" >/dev/null
"$cmake" -S "$source/examples/minimal" -B "$work/example" "$@" \
  -DCMAKE_PREFIX_PATH="$work/installed" -DCMAKE_INSTALL_PREFIX="$work/installed" >/dev/null
"$cmake" --build "$work/example" >/dev/null
"$cmake" --install "$work/example" >/dev/null
cp -a "$work/installed" "$work/moved"
rm -rf "$work/installed"
bin=$work/moved/bin

status=0
check() { # check WHAT EXPECTED ACTUAL
  if [ "$2" != "$3" ]; then
    printf '%s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
    status=1
  fi
}

for tool in akvo-lipsync akvo-lipsync-sim akvo-logcat; do
  check "$tool --version" "$tool $version" "$("$bin/$tool" --version 2>&1 || true)"
done

start_server simulator "$bin/akvo-lipsync-sim" "$work/sim.sock" "$work/sim.out" --fixed

check "akvo-lipsync caps" "caps: Success granularityMs=20 maxAudioDelayMargin=100" \
  "$("$bin/akvo-lipsync" --socket "$work/sim.sock" caps 2>/dev/null || true)"
check "minimal" "capabilities: Success (granularity 20 ms, maximum 100 ms)
set margin: Success
timestamps: Success (capture 16045690984833536, rendering 16045690985263104, receiving 16045690984404992, depth 40)" \
  "$("$bin/minimal" "$work/sim.sock" 2>/dev/null || true)"
[ $status -eq 0 ] && echo "relocated prefix: the three tools and the example run from the copy"
exit $status
