#!/usr/bin/env bash
# Gives ./run wrong options: each gets one line and status 2, before anything is installed, built or started.
#
# usage: check_run_options.sh SOURCE_FOLDER
set -euo pipefail

answer=$(mktemp)
trap 'rm -f "$answer"' EXIT

# usage: refused WORD OPTIONS...   the answer must have the word
refused() {
  local word=$1 status=0
  shift
  timeout 10 "$source/run" "$@" >"$answer" 2>&1 || status=$?
  if [ "$status" -ne 2 ] || [ "$(wc -l <"$answer")" -ne 1 ] || ! grep -q -- "$word" "$answer"; then
    echo "FAIL: ./run $* ended with status $status and said:" >&2
    cat "$answer" >&2
    exit 1
  fi
}

source=$1
for seconds in '' 0 -1 1.5 ten 5s 1000000000 99999999999999999999; do
  refused --seconds --seconds "$seconds"
done
refused --seconds --seconds
refused "ends by itself" --tour --seconds 5
refused "ends by itself" --seconds 5 --tour
refused "ends by itself" --trace --tour
for option in --tuor --second tour -x ''; do
  refused "has no option" "$option"
done
echo "PASS: wrong options are refused"
