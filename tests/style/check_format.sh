#!/usr/bin/env bash
# Compares every C++ file with what clang-format makes of it by the rules of .clang-format.
#
# usage: check_format.sh SOURCE_FOLDER
#
# Pinned to version 14, since each version breaks other lines. Exit code 77 where the distribution lacks it.
set -euo pipefail

cd "$1"
if ! command -v clang-format-14 >/dev/null; then
  echo "SKIP: no clang-format-14 on this machine"
  exit 77
fi
mapfile -d '' files < <(find . -path ./.git -prune -o -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0)
# Less would mean that the sources are not found any more.
if [ "${#files[@]}" -lt 400 ]; then
  echo "FAIL: only ${#files[@]} files found" >&2
  exit 1
fi
clang-format-14 --dry-run --Werror "${files[@]}" || {
  echo "FAIL: clang-format-14 -i puts these files right" >&2
  exit 1
}
echo "PASS: ${#files[@]} files"
