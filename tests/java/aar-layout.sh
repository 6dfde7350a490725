#!/usr/bin/env bash
# Checks an Android library archive: exactly the files that Android's build
# takes from it, the manifest's package and minimum API level, an empty
# R.txt, keep rules for the native methods, and a JNI library that exports
# exactly the native methods that classes.jar declares. The C++ runtime is either there or noted as missing.
# Usage: aar-layout.sh AAR
set -euo pipefail
aar=$(realpath "$1")
work=$(mktemp -d /tmp/akvo-aar.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
jar xf "$aar"
status=0
fail() {
  echo "$aar: $*"
  status=1
}

expected=$'AndroidManifest.xml\nR.txt\nclasses.jar\njni/x86/libakvolipsyncapi.so\njni/x86/libakvolipsyncapi_jni.so\nproguard.txt'
files=$(find . -type f | sed 's|^\./||' | grep -vxE 'jni/x86/libc\+\+_shared\.so|libc\+\+_shared\.txt' | LC_ALL=C sort)
[ "$files" = "$expected" ] || fail $'holds\n'"$files"$'\ninstead of\n'"$expected"
runtimes=$(find . -path ./jni/x86/libc++_shared.so -o -path ./libc++_shared.txt | wc -l)
[ "$runtimes" -eq 1 ] || fail "holds $runtimes of jni/x86/libc++_shared.so and the note libc++_shared.txt, not one"
grep -q 'package="velmo.kvo.lipsyncapi"' AndroidManifest.xml || fail "AndroidManifest.xml names no package velmo.kvo.lipsyncapi"
grep -q 'android:minSdkVersion="21"' AndroidManifest.xml || fail "AndroidManifest.xml has no minSdkVersion 21"
[ ! -s R.txt ] || fail "R.txt is not empty"
grep -Pzq 'class velmo\.kvo\.lipsyncapi\.LipSyncService \{\s*native <methods>;' proguard.txt ||
  fail "proguard.txt keeps no native methods of LipSyncService"
classes=$(jar tf classes.jar | sed -n 's/\.class$//p' | tr / .)
# shellcheck disable=SC2086
declared=$(javap -p -cp classes.jar $classes | awk '
  / class velmo\.kvo\.lipsyncapi\./ { match($0, /lipsyncapi\.[A-Za-z]+/); name = substr($0, RSTART + 11, RLENGTH - 11) }
  / native / { method = $0; sub(/\(.*/, "", method); print "Java_velmo_kvo_lipsyncapi_" name "_" words[split(method, words, " ")] }' |
  LC_ALL=C sort)
exported=$(nm -D --defined-only jni/x86/libakvolipsyncapi_jni.so | awk '{ print $3 }' | LC_ALL=C sort)
[ "$declared" = "$exported" ] || fail $'native methods\n'"$declared"$'\nbut JNI exports\n'"$exported"
[ $status -eq 0 ] && echo "$(basename "$aar"): $(wc -l <<<"$files") files as Android takes them, $(wc -l <<<"$declared") native methods exported"
exit $status
