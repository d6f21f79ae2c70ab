#!/bin/bash
# Installs the optimised build, moves the installed tree, and uses it as a host's developer would; then the same with
# the Debian package. Leaves nothing behind.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing dpkg-dev file
build release
work=$(mktemp -d)
trap 'code=$?; rm -rf "$work"; (( code == 0 )) || echo "$(basename "$0") failed while $step." >&2' EXIT

# Builds and runs the example against an installed tree, for this machine's plain and its wider vectors.
use() {
  local tree=$1 flags
  step="running the inspector of $tree"
  "$tree/bin/lumo-inspect" --version
  "$tree/bin/lumo-inspect" --format json --svg "$work/robot.svg" >/dev/null
  diff <("$tree/bin/lumo-digest" --states 100) <(build/release/bin/lumo-digest --states 100)
  for flags in "" -mavx; do
    [[ -z $flags ]] || grep -qw avx /proc/cpuinfo || continue
    step="building the example host $flags against $tree"
    rm -rf "$work/host"
    cmake -G Ninja -S examples/host -B "$work/host" -DCMAKE_PREFIX_PATH="$tree" -DCMAKE_CXX_FLAGS="$flags" \
      -DCMAKE_BUILD_TYPE=Release >/dev/null
    cmake --build "$work/host" >/dev/null
    step="running the example host $flags against $tree"
    "$work/host/host"
  done
}

step="installing"
cmake --install build/release --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
use "$work/moved"

step="making the Debian package"
(cd build/release && cpack -G DEB -B "$work/packages" >/dev/null)
package=$(ls "$work"/packages/*.deb)
step="installing the Debian package"
apt-get install --simulate -qq "$package" >/dev/null # whether its dependencies can be had
dpkg-deb --extract "$package" "$work/root"
use "$work/root/usr"
dpkg-deb --field "$package" Package Version Depends
step="comparing the pictures in docs/ with what the inspector draws"
build/release/bin/lumo-inspect --svg "$work/robot.svg" >/dev/null
build/release/bin/lumo-inspect --root 0,0,0.75,0,0,0 --axes --svg "$work/axes.svg" >/dev/null
cmp "$work/robot.svg" docs/robot.svg
cmp "$work/axes.svg" docs/axes.svg
echo "The installed tree and the Debian package work."
