#!/usr/bin/env bash
# Sees that no source or packaging file but the top CMakeLists.txt names the version, and that kora-sim shows it.
#
# usage: check_version.sh SOURCE_FOLDER VERSION KORA_SIM
set -euo pipefail

cd "$1"
version=$2
grep -q "^project(kora-local-ui VERSION $version " CMakeLists.txt || {
  echo "FAIL: CMakeLists.txt has another version" >&2
  exit 1
}
# As a word of its own: "v1.3" is one, a number with more digits is none.
pattern="(^|[^0-9.])${version//./\\.}($|[^0-9.])"
# The beam has a phase of the same number.
if grep -rInE "$pattern" src forms simulation packaging resources cmake | grep -v '^simulation/beam/Beam.cpp:'; then
  echo "FAIL: the version stands in more than one place" >&2
  exit 1
fi
[ "$("$3" --version)" = "kora-sim $version" ] || {
  echo "FAIL: kora-sim shows another version" >&2
  exit 1
}
echo "PASS: version $version"
