# Shared by run, test and bench/run: what a fresh Debian 12 or 13 machine lacks, and the build. Sourced, from the top folder.

buildPackages=(
  g++ cmake ninja-build pkg-config
  qtbase5-dev qtbase5-dev-tools libqt5svg5-dev libqt5opengl5-dev
  libqcustomplot-dev libfftw3-dev libarmadillo-dev libgl-dev
  xvfb xauth libgl1-mesa-dri fonts-dejavu-core
)
runPackages=(imagemagick openbox x11-utils bubblewrap)
fuzzPackages=(clang libclang-rt-dev)
# Of the recorder, which is built where HDF5 is found, and of the readers of its files.
recorderPackages=(libhdf5-dev python3-h5py hdf5-tools)
testPackages=(binutils bubblewrap devscripts dpkg-dev file desktop-file-utils appstream man-db groff-base imagemagick)
# Pinned, since each version breaks other lines; a release of Debian without it skips that one test.
formatPackages=(clang-format-14)
tidyPackages=(clang-tidy)
# Of the device server for the control system TANGO, which is built and tested where they are.
tangoPackages=(
  libtango-dev python3-tango python3-numpy python3-taurus python3-taurus-pyqtgraph
  mariadb-server-core mariadb-client-core
)
benchPackages=(libbenchmark-dev libqwt-qt5-dev libspdlog-dev libxcb1-dev)

# Runs a command as root: directly, or with sudo.
asRoot() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "This needs root or sudo: $*" >&2
    return 1
  fi
}

# Installs those of the named Debian packages that are missing.
installMissing() {
  local missing=() package
  for package in "$@"; do
    if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
      missing+=("$package")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing ${missing[*]}"
  asRoot env DEBIAN_FRONTEND=noninteractive apt-get update -q >/dev/null
  asRoot env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
}

# Unpacks the TANGO database into build/tango-db, since its package would install and start services.
unpackTangoDatabase() {
  [ -x build/tango-db/usr/lib/tango/DataBaseds ] && return 0
  local folder
  folder=$(mktemp -d)
  if (cd "$folder" && apt-get download -q tango-db >/dev/null 2>&1) && dpkg -x "$folder"/tango-db_*.deb build/tango-db; then
    rm -rf "$folder"
    return 0
  fi
  rm -rf "$folder" build/tango-db
  return 1
}

# Configures a preset once and builds the named targets, or all.
# usage: buildPreset PRESET [TARGET...]
buildPreset() {
  local preset=$1
  shift
  if [ ! -f "build/$preset/build.ninja" ]; then
    cmake --preset "$preset"
  fi
  if [ $# -gt 0 ]; then
    cmake --build --preset "$preset" --target "$@"
  else
    cmake --build --preset "$preset"
  fi
}
