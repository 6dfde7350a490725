# shellcheck shell=bash
# Sourced by every script that runs the engine simulator, akvo-logcat or
# another program that serves a socket given by --socket and says
# "listening on PATH" once it does:
#
#   start_server VAR PROGRAM SOCKET LOG [ARG...]
#     starts PROGRAM --socket SOCKET ARG... in the background, its standard
#     output and error in LOG, and returns once it listens, with its process
#     id in the variable VAR. If it exits first or does not listen within
#     10 s, prints LOG on standard error, stops it and returns 1.
#   stop_server PID
#     stops that server and waits for it; an empty PID is ignored, so that an
#     EXIT trap may call it whatever happened before.
#
# LOG is made before the program starts, so that no look at it can come
# before the file exists; the program's own line, which it writes once it
# listens, is the only sign taken.

start_server() {
  local var=$1 program=$2 socket=$3 log=$4
  shift 4
  : >"$log"
  "$program" --socket "$socket" "$@" >"$log" 2>&1 &
  local pid=$!
  printf -v "$var" '%s' "$pid"
  local tries
  for ((tries = 200; tries > 0; tries--)); do
    grep -q "listening on" "$log" && return 0
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.05
  done
  echo "$(basename "$program") did not start listening on $socket:" >&2
  cat "$log" >&2
  stop_server "$pid"
  return 1
}

stop_server() {
  [ -n "$1" ] || return 0
  kill "$1" 2>/dev/null || true
  wait "$1" 2>/dev/null || true
}
