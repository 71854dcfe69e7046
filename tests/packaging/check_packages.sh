#!/usr/bin/env bash
# Makes both Debian packages, unpacks them into a scratch root, validates what desktops read, and sees the graphs of
# the installed program move on the installed simulation.
#
# usage: check_packages.sh BUILD_FOLDER
set -euo pipefail

build=$1
scratch=$(mktemp -d)
programPid=
finish() {
  [ -n "$programPid" ] && kill "$programPid" 2>/dev/null
  rm -rf "$scratch"
}
trap finish EXIT

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

(cd "$build" && cpack -G DEB -B "$scratch/packages" >"$scratch/cpack.log" 2>&1) || {
  cat "$scratch/cpack.log"
  fail "cpack"
}
for package in kora-local-ui kora-simulation; do
  file=$(find "$scratch/packages" -maxdepth 1 -name "${package}_*.deb")
  [ -n "$file" ] || fail "no package $package"
  dpkg-deb -x "$file" "$scratch/root"
  dpkg-deb -f "$file" Package Version Depends
done

dependencies=$(dpkg-deb -f "$scratch"/packages/kora-local-ui_*.deb Depends)
case $dependencies in *kora-simulation*) fail "the program depends on the simulation" ;; esac

desktop-file-validate "$scratch/root/usr/share/applications/kora-local-ui.desktop"
appstreamcli validate --no-net "$scratch"/root/usr/share/metainfo/*.metainfo.xml
for page in "$scratch"/root/usr/share/man/man1/*.1; do
  man --warnings -l "$page" >/dev/null 2>"$scratch/man.log" || true
  [ ! -s "$scratch/man.log" ] || fail "manual page $page: $(cat "$scratch/man.log")"
done
for size in 16x16 256x256; do
  [ -f "$scratch/root/usr/share/icons/hicolor/$size/apps/kora-local-ui.png" ] || fail "no icon of $size"
done
guide="$scratch/root/usr/share/doc/kora-local-ui"
[ -f "$guide/operator-guide.md" ] || fail "no operator's guide"
for picture in $(grep -o '(images/[^)]*)' "$guide/operator-guide.md" | tr -d '()'); do
  [ -f "$guide/$picture" ] || fail "no $picture beside the guide"
done

LD_LIBRARY_PATH="$scratch/root/usr/lib/kora-simulation" "$scratch/root/usr/bin/kora-local-ui" &
programPid=$!
# One picture after the first second of data, the next ones until something has moved.
sleep 3
import -window root "$scratch/first.png"
moved=0
for _ in $(seq 20); do
  sleep 0.5
  import -window root "$scratch/next.png"
  if [ "$(compare -metric AE "$scratch/first.png" "$scratch/next.png" null: 2>&1 || true)" != 0 ]; then
    moved=1
    break
  fi
done
[ "$moved" = 1 ] || fail "the graphs do not move"
"$scratch/root/usr/bin/kora-sim" --pid "$programPid" status >"$scratch/status.txt" || fail "the console does not answer"
[ -s "$scratch/status.txt" ] || fail "the console says nothing"
kill -TERM "$programPid"
wait "$programPid" || fail "the program ended with status $?"
programPid=
echo "PASS: both packages install, and the graphs move"
