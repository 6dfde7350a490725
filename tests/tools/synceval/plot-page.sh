#!/usr/bin/env bash
# Opens the page that akvo-synceval --plots writes for SCENARIO in headless
# Chromium, and fails unless it renders whole (its script ran to the end)
# with no console message, and fetches nothing from anywhere.
# Usage: plot-page.sh AKVO_SYNCEVAL SCENARIO. Exits 77 (skipped) without Chromium.
set -euo pipefail
synceval=$1
scenario=$2
browser=$(command -v chromium || true)
if [ -z "$browser" ]; then
  echo "chromium is not installed (scripts/setup-deps --browser): skipped"
  exit 77
fi
work=$(mktemp -d /tmp/akvo-plot-page.XXXXXX)
trap 'rm -rf "$work"' EXIT
"$synceval" --plots "$work/plots" "$scenario" >/dev/null
page=$(echo "$work"/plots/*.html)
if grep -Eo '(src|href)="[^"]*"|url\(' "$page"; then
  echo "the page refers to something outside itself"
  exit 1
fi
# As root Chromium needs --no-sandbox; the networking flags keep it from
# reaching out, which this machine's closed network refuses anyway.
timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
  --disable-background-networking --disable-component-update --disable-sync \
  --user-data-dir="$work/profile" --enable-logging=stderr --v=0 \
  --dump-dom "file://$page" >"$work/dom" 2>"$work/errors"
if grep ':CONSOLE' "$work/errors"; then
  echo "the page wrote to the console"
  exit 1
fi
for expected in '<svg id="plot"' 'data-columns="920"' '<polyline'; do
  if ! grep -q "$expected" "$work/dom"; then
    echo "the rendered page lacks $expected"
    exit 1
  fi
done
echo "plot page renders with no console message: $(basename "$page")"
