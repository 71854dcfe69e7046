#!/usr/bin/env bash
# Looks whether the commands of README.md mean something: each name in a pattern of "./test -R" is that of a suite, and
# each kind of run after "tests/long-runs" is one that the script knows.
#
# usage: check_commands.sh SOURCE_FOLDER BUILD_FOLDER CTEST
set -euo pipefail

source=$1
suites=$("$3" --test-dir "$2" -N)
commands=0

# A bar in a table stands with a backslash.
while read -r name; do
  commands=$((commands + 1))
  grep -Eq "Test +#[0-9]+: .*$name" <<<"$suites" || {
    echo "FAIL: no suite has \"$name\" in its name" >&2
    exit 1
  }
done < <(sed -n "s/.*\`\.\/test -R '\{0,1\}\([^'\`]*\)'\{0,1\}\`.*/\1/p" "$source/README.md" | sed 's/\\|/\n/g')

while read -r kind; do
  commands=$((commands + 1))
  grep -Eq "^  $kind\)$" "$source/tests/long-runs" || {
    echo "FAIL: tests/long-runs does not know \"$kind\"" >&2
    exit 1
  }
done < <(sed -n 's/.*`tests\/long-runs \([a-z]*\).*/\1/p' "$source/README.md")

# Less would mean that the table is not found any more.
[ "$commands" -ge 10 ] || {
  echo "FAIL: only $commands names found" >&2
  exit 1
}
echo "PASS: $commands names"
