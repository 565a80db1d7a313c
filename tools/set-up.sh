# shellcheck shell=sh disable=SC2034 # the lists are for whoever sources this file
# Shared by ./run and ./test: installs what is missing of Debian's packages, and builds the preset "default".
# To be sourced with the repository as working directory.

build_packages="g++ cmake ninja-build qt6-base-dev libboost-dev libboost-filesystem-dev libfreeimage-dev libhwy-dev \
libfftw3-dev libfann-dev libssl-dev libsvm-dev libgtest-dev python3"
# gnuplot draws the charts. Fonts: the window's own, and one for everything else; a bare system has none at all.
run_packages="gnuplot-nox fonts-liberation fonts-dejavu-core"

# The tests run programs under other locales and an experiment in parts, and build a plug-in as its author would.
test_packages="locales parallel pkgconf"

# A Debian package has man pages and the manual as HTML, and is checked before it goes out.
package_packages="pandoc lintian mandoc desktop-file-utils appstream"

# The preset "fuzz"; llvm-14 puts names to the places of a fault.
fuzz_packages="clang-14 libclang-rt-14-dev llvm-14"

install_packages() {
  if ! command -v dpkg-query >/dev/null; then
    echo "This system does not use Debian's packages; what is needed must be there already:"
    echo "  $*"
    return
  fi
  missing=""
  for package in "$@"; do
    if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
      missing="$missing $package"
    fi
  done
  if [ -z "$missing" ]; then
    return
  fi
  echo "Installing the missing packages:$missing"
  as_root=""
  if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Only root can do that, and there is no sudo. Please have them installed:" >&2
      echo "  apt-get install$missing" >&2
      exit 1
    fi
    as_root=sudo
  fi
  $as_root apt-get update
  # shellcheck disable=SC2086
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
}

build_default() {
  cmake --preset default
  cmake --build --preset default -j "${JOBS:-$(nproc)}"
}
