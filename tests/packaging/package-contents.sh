#!/usr/bin/env bash
# Runs cpack in a build tree and checks what each package holds: the .deb
# files listed with dpkg-deb --contents, their dependencies, and the same
# files in the .tar.gz of each part. Usage: package-contents.sh BUILD_DIR
set -euo pipefail
build=$(cd "${1:?usage: package-contents.sh BUILD_DIR}" && pwd)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
major=${version%%.*}

work=$(mktemp -d /tmp/akvo-packages.XXXXXX)
trap 'rm -rf "$work"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; exit 1; }

status=0
fail() { echo "$*"; status=1; }
# Files and links of a package, one path a line, without the leading "./usr".
deb_files() { dpkg-deb --contents "$1" | awk '$1 !~ /^d/ { print $6 }' | sed 's|^\./usr/||' | sort; }
tgz_files() { tar -tzvf "$1" | awk '$1 !~ /^d/ { print $6 }' | sort; }

check_package() { # check_package NAME EXPECTED_FILES REQUIRED_DEPENDS
  local name=$1 expected=$2 depends=$3 deb files
  deb=$(find "$work" -maxdepth 1 -name "${name}_${version}_*.deb")
  [ -n "$deb" ] || { fail "no .deb for $name"; return; }
  files=$(deb_files "$deb")
  echo "== $name: $(basename "$deb")"
  sed 's/^/   /' <<<"$files"
  if [ "$files" != "$expected" ]; then
    fail "$name holds other files than intended:"
    diff <(echo "$expected") <(echo "$files") | sed 's/^/   /' || true
  fi
  if [ -n "$depends" ] && ! dpkg-deb --field "$deb" Depends | grep -Fq "$depends"; then
    fail "$name does not depend on $depends: $(dpkg-deb --field "$deb" Depends)"
  fi
}

runtime="lib/libakvolipsyncapi.so.$major
lib/libakvolipsyncapi.so.$version"
tools="bin/akvo-lipsync
bin/akvo-lipsync-sim
bin/akvo-logcat"
# The headers are the installed public ones, whatever they are; the rest is exact.
headers=$(cd "$work" && cmake --install "$build" --prefix "$work/headers" --component development >/dev/null &&
  cd "$work/headers" && find include -type f | sort)
development=$(sort <<<"$headers
lib/cmake/akvolipsyncapi/akvolipsyncapiConfig.cmake
lib/cmake/akvolipsyncapi/akvolipsyncapiConfigVersion.cmake
lib/cmake/akvolipsyncapi/akvolipsyncapiTargets.cmake
lib/cmake/akvolipsyncapi/akvolipsyncapiTargets-$(sed -n 's/^CMAKE_BUILD_TYPE:STRING=//p' "$build/CMakeCache.txt" | tr '[:upper:]' '[:lower:]').cmake
lib/libakvolipsyncapi.so
lib/pkgconfig/akvolipsyncapi.pc")

for header in velmo/kvo/lipsyncapi/Service.h velmo/kvo/lipsyncapi/akvo_lipsync.h velmo/kvo/log/AndroidLog.h \
  velmo/kvo/common/LipSyncNtpTimestamps.h velmo/utilities/result/Result.h; do
  grep -Fxq "include/$header" <<<"$headers" || fail "public header missing: $header"
done

check_package "libakvolipsyncapi$major" "$runtime" ""
check_package libakvolipsyncapi-dev "$development" "libakvolipsyncapi$major (= $version)"
check_package akvolipsyncapi-tools "$tools" "libakvolipsyncapi$major (= $version)"
components="runtime development tools"
# The Java binding is packaged where a JDK built it.
if grep -q '^akvolipsyncapi_jni' <(cd "$build" && cmake --build . --target help 2>/dev/null | sed 's/^\.\.\. //'); then
  java="lib/libakvolipsyncapi_jni.so
share/java/akvolipsyncapi.jar"
  check_package libakvolipsyncapi-java "$java" "libakvolipsyncapi$major (= $version)"
  components="$components java"
fi

for component in $components; do
  tgz=$(find "$work" -maxdepth 1 -name "akvolipsyncapi-$version-*-$component.tar.gz")
  [ -n "$tgz" ] || { fail "no .tar.gz for $component"; continue; }
  expected=${!component}
  [ "$(tgz_files "$tgz")" = "$expected" ] || fail "$(basename "$tgz") differs from the .deb of $component"
done
[ $status -eq 0 ] && echo "packages: each holds the intended files"
exit $status
