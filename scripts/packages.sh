# Sourced by the other scripts: makes sure that Debian packages are there.
# Without root and with something missing it says which, in one line, and ends with 2.

require_packages() {
  missing=
  for package; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" != 0 ]; then
    echo "$0: packages are missing; as root: apt-get install -y --no-install-recommends$missing" >&2
    exit 2
  fi
  echo "Installing$missing"
  export DEBIAN_FRONTEND=noninteractive
  { apt-get update -q && apt-get install -y -q --no-install-recommends $missing; } >/dev/null ||
    { echo "$0: apt-get could not install:$missing" >&2; exit 2; }
}

build_packages="g++ cmake python3 ninja-build ccache libboost1.81-dev libcli11-dev libstb-dev nlohmann-json3-dev libfmt-dev libgtest-dev"
install_packages="clang lintian pkg-config tshark" # to use what is installed as users do
windows_packages="g++-mingw-w64-x86-64-posix wine wine64 googletest lld unzip"
