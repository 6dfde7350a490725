#!/usr/bin/env bash
# Runs cpack in a build tree and checks the packages as Debian and their users
# see them: what each .deb holds (dpkg-deb --contents) and depends on, the
# same files in the .tar.gz of each part, stripped binaries whose debug
# information is in the -dbgsym packages, no lintian error on any package,
# the manual pages in the install tree, and a C++14 project built with
# find_package against the -dev package, which dpkg-shlibdeps finds to need
# libakvolipsyncapi1. Usage: package-contents.sh BUILD_DIR
set -euo pipefail
build=$(cd "${1:?usage: package-contents.sh BUILD_DIR}" && pwd)
source=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$build/CMakeCache.txt")
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
major=${version%%.*}
debversion=$(dpkg-parsechangelog -l "$source/cmake/debian/changelog" -S Version)

work=$(mktemp -d /tmp/akvo-packages.XXXXXX)
trap 'rm -rf "$work"' EXIT
status=0
fail() { echo "$*"; status=1; }
[ "${debversion%-*}" = "$version" ] || fail "cmake/debian/changelog: the newest entry is $debversion, not one for $version"

cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; exit 1; }

# Files and links of a package, one path a line, without the leading "./usr".
deb_files() { dpkg-deb --contents "$1" | awk '$1 !~ /^d/ { print $6 }' | sed 's|^\./usr/||' | sort; }
tgz_files() { tar -tzvf "$1" | awk '$1 !~ /^d/ { print $6 }' | sort; }
build_id() { readelf -n "$1" | sed -n 's/^ *Build ID: //p'; }

check_package() { # check_package NAME EXPECTED_FILES REQUIRED_DEPENDS
  local name=$1 expected=$2 depends=$3 deb files tree binary id dbgsym debug_files
  deb=$(find "$work" -maxdepth 1 -name "${name}_${debversion}_*.deb")
  [ -n "$deb" ] || { fail "no .deb for $name"; return; }
  expected=$(sort <<<"$expected
share/doc/$name/changelog.Debian.gz
share/doc/$name/changelog.gz
share/doc/$name/copyright")
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
  # Each binary is stripped, and its debug information is in the -dbgsym
  # package under its build id.
  tree=$work/tree/$name
  mkdir -p "$tree"
  dpkg-deb --extract "$deb" "$tree"
  dbgsym=${deb/%.deb/.ddeb}
  dbgsym=${dbgsym/"/${name}_"/"/${name}-dbgsym_"}
  debug_files=$([ ! -f "$dbgsym" ] || deb_files "$dbgsym")
  while IFS= read -r binary; do
    [[ $(readelf -S "$binary") != *.debug_info* ]] || fail "$name: ${binary#"$tree"/} is not stripped"
    id=$(build_id "$binary")
    grep -Fxq "lib/debug/.build-id/${id:0:2}/${id:2}.debug" <<<"$debug_files" ||
      fail "$name: no debug information for ${binary#"$tree"/} (build id $id) in $(basename "$dbgsym")"
  done < <(find "$tree" -type f -exec sh -c 'head -c4 "$1" | grep -q ELF' _ {} \; -print)
}

runtime="lib/libakvolipsyncapi.so.$major
lib/libakvolipsyncapi.so.$version"
tools="bin/akvo-lipsync
bin/akvo-lipsync-sim
bin/akvo-logcat
share/bash-completion/completions/akvo-lipsync
share/man/man1/akvo-lipsync-sim.1.gz
share/man/man1/akvo-lipsync.1.gz
share/man/man1/akvo-logcat.1.gz"
# The headers are the installed public ones, whatever they are; the rest is exact.
(cd "$work" && cmake --install "$build" --prefix "$work/installed" >/dev/null)
headers=$(cd "$work/installed" && find include -type f | sort)
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
check_package libakvolipsyncapi-dev "$development" "libakvolipsyncapi$major (= $debversion)"
check_package akvolipsyncapi-tools "$tools" "libakvolipsyncapi$major (= $debversion)"
components="runtime development tools"
# The Java binding is packaged where a JDK built it.
if grep -q '^akvolipsyncapi_jni' <(cd "$build" && cmake --build . --target help 2>/dev/null | sed 's/^\.\.\. //'); then
  java="lib/jni/libakvolipsyncapi_jni.so
share/java/akvolipsyncapi-$version.jar
share/java/akvolipsyncapi.jar"
  check_package libakvolipsyncapi-java "$java" "libakvolipsyncapi$major (= $debversion)"
  components="$components java"
fi

for component in $components; do
  tgz=$(find "$work" -maxdepth 1 -name "akvolipsyncapi-$version-*-*-$component.tar.gz")
  [ -n "$tgz" ] || { fail "no .tar.gz for $component, named after the system and the processor"; continue; }
  expected=${!component}
  [ "$(tgz_files "$tgz")" = "$expected" ] || fail "$(basename "$tgz") differs from the .deb of $component"
done

echo "== lintian"
shopt -s nullglob
lintian --fail-on error "$work"/*.deb "$work"/*.ddeb >"$work/lintian.log" 2>&1 || lintian_status=$?
shopt -u nullglob
grep -v '^running with root privileges' "$work/lintian.log" || true
[ "${lintian_status:-0}" -eq 0 ] || fail "lintian reports errors (above)"

# A program built as a C++14 project against the unpacked -dev package; the
# runtime package's shlibs file tells dpkg-shlibdeps which package it needs.
dpkg-deb --raw-extract "$work/libakvolipsyncapi${major}_${debversion}"_*.deb "$work/runtime"
dpkg-deb --extract "$work/libakvolipsyncapi-dev_${debversion}"_*.deb "$work/runtime"
if cmake -S "$source/tests/packaging/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/runtime/usr" \
  >"$work/consumer.log" 2>&1 && cmake --build "$work/consumer" >>"$work/consumer.log" 2>&1; then
  mkdir -p "$work/shlibdeps/debian/consumer/DEBIAN" "$work/shlibdeps/debian/consumer/usr/bin"
  touch "$work/shlibdeps/debian/control"
  cp "$work/consumer/consumer" "$work/shlibdeps/debian/consumer/usr/bin/"
  depends=$(cd "$work/shlibdeps" && dpkg-shlibdeps -O -S"$work/runtime" debian/consumer/usr/bin/consumer)
  echo "== dpkg-shlibdeps of a program built with find_package as C++14: $depends"
  grep -Fq "libakvolipsyncapi$major (>= $debversion)" <<<"$depends" ||
    fail "dpkg-shlibdeps does not name libakvolipsyncapi$major (>= $debversion)"
else
  cat "$work/consumer.log"
  fail "a C++14 project cannot build against the -dev package"
fi
[ $status -eq 0 ] && echo "packages: each holds the intended files, lintian reports no error"
exit $status
