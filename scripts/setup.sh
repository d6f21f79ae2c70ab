# The other scripts source this file. It prepares the machine and builds presets. It needs `set -euo pipefail`.

CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
step="starting"
scratch=""
finish() {
  local code=$?
  [[ -z $scratch ]] || rm -rf --one-file-system "$scratch" || code=1 # not what is still mounted there
  (( code == 0 )) || echo "$(basename "$0") failed while $step." >&2
  exit "$code"
}
trap finish EXIT

# Ends the script, because its arguments are wrong.
refuse() {
  trap - EXIT
  echo "$1" >&2
  exit 2
}

# Makes a temporary folder, $scratch, which is removed when the script ends.
make_scratch() { scratch=$(mktemp -d); }

# Prints the commands in documents that a reader is told to type: the indented lines outside of tables and fences.
documented_commands() { awk '/^```/ { fenced = !fenced } !fenced && /^    +[^ |]/ { sub(/^ +/, ""); print }' "$@"; }

# The packages for the tests, for lumo-sines, for the manual pages, and for the Python module and its examples. The build
# leaves out what it has no packages for.
all_packages=(help2man libgtest-dev libmpfr-dev liburdfdom-dev pybind11-dev python3-dev python3-numpy python3-matplotlib
  python3-mypy python3-pytest python3-distributed)

# The packages for the benchmarks, and those for the benchmarks of the other libraries and of the Python module.
bench_packages=(libbenchmark-dev python3 util-linux)
peer_packages=(libmujoco-dev liborocos-kdl-dev liburdfdom-dev pybind11-dev python3-dev python3-numpy)

# Installs the packages that the plug-in and the inspector need and those in the arguments, if they are missing. Needs
# root only if one is missing.
install_missing() {
  local packages=(g++ cmake ninja-build libeigen3-dev libboost-dev libfmt-dev libcli11-dev nlohmann-json3-dev "$@")
  [[ ${CXX:-} != *clang* ]] || packages+=(clang libclang-rt-14-dev)

  step="looking for installed packages"
  local missing=() package
  for package in "${packages[@]}"; do
    dpkg-query --show --showformat='${Status}\n' "$package" 2>/dev/null | grep -q ' installed$' || missing+=("$package")
  done
  (( ${#missing[@]} )) || return 0

  step="installing ${missing[*]}"
  echo "Installing ${missing[*]}"
  local as_root=()
  if (( EUID != 0 )); then
    command -v sudo >/dev/null || { echo "Installing packages needs root or sudo." >&2; return 1; }
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# Configures one preset and builds it, or only the targets in the further arguments. A build folder keeps its compiler
# unless CXX names another one.
build() {
  local preset=$1 fresh=() cache="build/$1/CMakeCache.txt" cached
  if [[ -n ${CXX:-} && -f $cache ]]; then
    cached=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$cache")
    [[ $(readlink -f "$cached") == $(readlink -f "$(command -v "$CXX")") ]] || fresh=(--fresh) # c++ may be g++
  fi
  step="configuring the preset $preset"
  cmake --preset "$preset" "${fresh[@]}"
  step="building the preset $preset"
  cmake --build --preset "$preset" ${2:+--target "${@:2}"}
}
