#!/usr/bin/env bash
# Makes both Debian packages, unpacks them into a scratch root, validates what desktops read, sees that what they install
# is hardened and goes again without the operator's settings, and sees the graphs of the installed program move on the
# installed simulation.
#
# usage: check_packages.sh BUILD_FOLDER VERSION
set -euo pipefail

build=$1
version=$2
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
synopses=()
packages=(kora-local-ui kora-simulation)
pages=(kora-local-ui kora-sim)
if [ -x "$build/kora-recorder" ]; then
  packages+=(kora-recorder)
  pages+=(kora-recorder)
fi
for package in "${packages[@]}"; do
  file=$(find "$scratch/packages" -maxdepth 1 -name "${package}_*.deb")
  [ -n "$file" ] || fail "no package $package"
  dpkg-deb -x "$file" "$scratch/root"
  dpkg-deb -f "$file" Package Version Depends Description
  [ "$(dpkg-deb -f "$file" Version)" = "$version" ] || fail "$package is not of version $version"
  description=$(dpkg-deb -f "$file" Description)
  synopses+=("${description%%$'\n'*}")
  for text in copyright changelog.gz; do
    [ -s "$scratch/root/usr/share/doc/$package/$text" ] || fail "no $text of $package"
  done
done
for text in "$scratch"/root/usr/share/{doc/*/changelog,man/man1/*.1}.gz; do
  zgrep -qF -e "($version)" -e "KORA $version" "$text" || fail "$text does not tell version $version"
done
grep -q "release version=\"$version\"" "$scratch"/root/usr/share/metainfo/*.xml || fail "the metadata has another version"
[ "${synopses[0]}" != "${synopses[1]}" ] || fail "both packages are described alike"

dependencies=$(dpkg-deb -f "$scratch"/packages/kora-local-ui_*.deb Depends)
case $dependencies in *kora-simulation*) fail "the program depends on the simulation" ;; esac
[ -z "$(dpkg-deb -c "$scratch"/packages/kora-local-ui_*.deb | grep -E 'libkoralink|kora-sim')" ] ||
  fail "the program's package has parts of the simulation"
# Whatever the program loads must come with a package that it depends on, but for the closed control library.
LC_ALL=C readelf -d "$scratch/root/usr/bin/kora-local-ui" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' >"$scratch/needed"
[ -s "$scratch/needed" ] || fail "the program loads nothing"
while read -r library; do
  [ "$library" != libkoralink.so.1 ] || continue
  found=
  # Some machines have it for other architectures, too.
  for owner in $(dpkg-query -S "*/$library" | cut -d: -f1); do
    [[ ! ", $dependencies," =~ ", $owner"[\ ,] ]] || found=yes
  done
  [ -n "$found" ] || fail "$library comes with no dependency"
done <"$scratch/needed"

# The linker marks a program as safe for control-flow checks only if the C library's own start code is marked, too.
unmarked=()
readelf -n "$(gcc -print-file-name=Scrt1.o)" | grep -q "IBT, SHSTK" || unmarked=(--nocfprotection)
hardening-check "${unmarked[@]}" "$scratch"/root/usr/bin/* "$scratch"/root/usr/lib/kora-simulation/*.so.* \
  >"$scratch/hardening.log" || {
  cat "$scratch/hardening.log"
  fail "not hardened"
}

# usage: manage DPKG_OPTIONS...   installs or removes in a root of its own
manage() {
  PATH=$PATH:/usr/sbin:/sbin dpkg --root="$scratch/host" --log="$scratch/dpkg.log" --force-not-root \
    --force-script-chrootless --force-depends "$@" >"$scratch/manage.log" 2>&1 || {
    cat "$scratch/manage.log"
    fail "dpkg $*"
  }
}
settings=$scratch/host/opt/Zenthic/KORALINK
mkdir -p "$scratch"/host/var/lib/dpkg/{info,updates,triggers} "$scratch/host/opt"
touch "$scratch"/host/var/lib/dpkg/{status,available}
(cd "$scratch/host" && find . -path ./var -prune -o -print) | sort >"$scratch/before"
mapfile -t installed < <(for file in "$scratch"/packages/*.deb; do dpkg-deb -f "$file" Package; done)
manage --install "$scratch"/packages/*.deb
[ -d "$settings" ] || fail "there is no folder for the settings"
[ "$(stat -c %a "$settings")" = 2775 ] || fail "operators cannot save their settings"
touch "$settings/config_koralink.ini.lock"
manage --purge "${installed[@]}"
(cd "$scratch/host" && find . -path ./var -prune -o -print) | sort >"$scratch/after"
diff "$scratch/before" "$scratch/after" || fail "a purge leaves something behind"

mkdir -p -m 750 "$settings"
manage --install "$scratch"/packages/*.deb
[ "$(stat -c %a "$settings")" = 750 ] || fail "a folder that was there is changed"
echo "kept" >"$settings/config_koralink.ini"
manage --remove kora-local-ui
manage --purge "${installed[@]}"
[ "$(cat "$settings/config_koralink.ini")" = kept ] || fail "a purge takes the operator's settings"

desktop-file-validate "$scratch/root/usr/share/applications/kora-local-ui.desktop"
appstreamcli validate --no-net "$scratch"/root/usr/share/metainfo/*.metainfo.xml
for page in "${pages[@]/%/.1.gz}"; do
  page=$scratch/root/usr/share/man/man1/$page
  [ -f "$page" ] || fail "no manual page $page"
  man --warnings -l "$page" >/dev/null 2>"$scratch/man.log" || true
  [ ! -s "$scratch/man.log" ] || fail "manual page $page: $(cat "$scratch/man.log")"
done
for icon in 16x16/apps/kora-local-ui.png 256x256/apps/kora-local-ui.png scalable/apps/kora-local-ui.svg; do
  [ -f "$scratch/root/usr/share/icons/hicolor/$icon" ] || fail "no icon $icon"
done
guide="$scratch/root/usr/share/doc/kora-local-ui"
[ -f "$guide/operator-guide.md" ] || fail "no operator's guide"
for picture in $(grep -o '(images/[^)]*)' "$guide/operator-guide.md" | tr -d '()'); do
  [ -f "$guide/$picture" ] || fail "no $picture beside the guide"
done

unit=$scratch/root/usr/lib/systemd/user/kora-simulation.service
grep -q '^ExecStart=/usr/bin/kora-sim serve$' "$unit" || fail "no user unit that serves the simulation"

console=$scratch/root/usr/bin/kora-sim
for scenario in quiet-day beam-dump-and-recovery cabling-mistakes; do
  (cd "$scratch" && "$console" play --check "$scenario") || fail "the scenario $scenario is not found by its name"
done

# As a trainee does: on the installed training settings, in a folder of its own where user namespaces allow it.
install -D -m 644 -t "$scratch/settings" "$scratch/root/usr/share/kora-simulation/config_koralink.ini"
private=(bwrap --die-with-parent --dev-bind / / --tmpfs /opt --bind "$scratch/settings" /opt/Zenthic/KORALINK)
areas=(spectrum:600x150+150+480 cloud:300x150+80+105)
if ! bwrap --dev-bind / / true 2>/dev/null; then
  # Without those settings every position may be 0.
  private=()
  areas=(spectrum:600x150+150+480)
fi
export XDG_RUNTIME_DIR=$scratch/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
LD_LIBRARY_PATH="$scratch/root/usr/lib/kora-simulation" \
  ${private[@]+"${private[@]}"} "$scratch/root/usr/bin/kora-local-ui" &
programPid=$!
# One picture after the first second of data, the next ones until the graph has moved.
sleep 3
for area in "${areas[@]}"; do
  import -window root -crop "${area#*:}" +repage "$scratch/first.png"
  moved=0
  for _ in $(seq 40); do
    sleep 0.5
    import -window root -crop "${area#*:}" +repage "$scratch/next.png"
    if [ "$(compare -metric AE "$scratch/first.png" "$scratch/next.png" null: 2>&1 || true)" != 0 ]; then
      moved=1
      break
    fi
  done
  [ "$moved" = 1 ] || fail "the ${area%:*} does not move"
done
"$console" beam off || fail "the console does not reach the program"
[[ "$("$console" status)" =~ beam\ +off ]] || fail "the beam is not off"
kill -TERM "$("$console" list | cut -d' ' -f1)"
wait "$programPid" || fail "the program ended with status $?"
programPid=
echo "PASS: both packages install, and the graphs move"
