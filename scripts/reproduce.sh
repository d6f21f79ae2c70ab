#!/bin/bash
# Checks that the plug-in computes the same bits in all builds: builds it in several ways, computes all results of the
# same 2,000 states with each build, and compares a hash of each kind of result. --all adds more builds, some for other
# processors, and one as WebAssembly.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

all=""
case "$*" in
  "") ;;
  --all) all=yes ;;
  *) refuse "usage: scripts/reproduce.sh [--all]" ;;
esac

folder=build/reproduce
# Processors that builds are cross-compiled for and that are emulated. s390x is big-endian.
processors=()
[[ -z $all ]] || processors=(aarch64 riscv64 s390x)
packages=(clang ${all:+qemu-user})
for processor in "${processors[@]}"; do packages+=("g++-$processor-linux-gnu"); done
install_missing "${packages[@]}"

# All builds are compared with the first one. Its lumo-digest loads the plug-ins of the others.
ways=("gcc -O3" "clang -O3" "gcc -O0")
[[ -z $all ]] || ways+=("gcc -O2" "clang -O0" "clang -O2")
wide="-march=x86-64-v3"
if grep -qw avx2 /proc/cpuinfo && grep -qw fma /proc/cpuinfo; then
  ways+=("gcc -O3 $wide")
  [[ -z $all ]] || ways+=("gcc -O0 $wide" "gcc -O2 $wide" "clang -O0 $wide" "clang -O2 $wide" "clang -O3 $wide")
else
  echo "This processor has no AVX2 and FMA, so the builds with $wide are left out."
fi
for processor in "${processors[@]}"; do
  ways+=("$processor-gcc -O0" "$processor-gcc -O2" "$processor-gcc -O3")
done
[[ -z $all ]] || ways+=(WebAssembly)
# This build fuses products and sums, so its bits must differ. It shows that the comparison can fail.
[[ ${ways[*]} != *"$wide"* ]] || ways+=("gcc -O3 $wide, contracted")

folder_of() { tr -s ' ,=' '-' <<<"$folder/$1"; }

# Builds the plug-in in one way, which is named by its compiler and flags.
build_way() {
  local way=$1 compiler flags targets=(lumo_norvaX3) options=()
  compiler=${way%% *} flags=${way#* }
  case $compiler in
    gcc) options=(-D CMAKE_CXX_COMPILER=g++) ;;
    clang) options=(-D CMAKE_CXX_COMPILER=clang++) ;;
    WebAssembly) scripts/web.sh && mkdir -p "$(folder_of "$way")"; return ;;
    *-gcc)
      # The header-only libraries of this machine are used.
      flags+=" -idirafter /usr/include"
      options=(-D CMAKE_CXX_COMPILER="${compiler%-gcc}-linux-gnu-g++" -D CMAKE_SYSTEM_NAME=Linux
               -D CMAKE_SYSTEM_PROCESSOR="${compiler%-gcc}" -D fmt_DIR="/usr/lib/$(g++ -dumpmachine)/cmake/fmt")
      targets+=(lumo-digest) ;;
  esac
  [[ $way != "${ways[0]}" ]] || targets+=(lumo-digest)
  # This option must come after the one that forbids contraction.
  if [[ $way == *", contracted" ]]; then
    flags=${flags%, contracted}
    options+=(-D CMAKE_CXX_COMPILE_OBJECT="<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -ffp-contract=fast \
                                           -o <OBJECT> -c <SOURCE>")
  fi
  cmake -S . -B "$(folder_of "$way")" -G Ninja -D BUILD_TESTING=OFF -D CMAKE_CXX_FLAGS="$flags" "${options[@]}"
  cmake --build "$(folder_of "$way")" --target "${targets[@]}"
}

# Runs lumo-digest with one build and with options. Without options it prints one hash for each kind of result.
digest() {
  local way=$1 processor=${1%%-gcc *} driver
  if [[ $way == WebAssembly ]]; then
    node -e 'require("./build/web/lumo.js")().then((lumo) => process.stdout.write(new lumo.Robot().digest(2000)))'
    return
  fi
  driver=("$(folder_of "${ways[0]}")/bin/lumo-digest")
  [[ $processor == "$way" ]] ||
    driver=("qemu-$processor" -L "/usr/$processor-linux-gnu" "$(folder_of "$way")/bin/lumo-digest")
  "${driver[@]}" --plugin "$(folder_of "$way")/lib/lumo/norvaX3.so" "${@:2}"
}

mkdir -p "$folder"
for way in "${ways[@]}"; do
  step="building $way"
  echo "Building $way"
  build_way "$way" >"$folder/log" 2>&1 || { cat "$folder/log" >&2; exit 1; }
  step="running $way"
  digest "$way" >"$(folder_of "$way")/digest"
done

echo
failed=""
expected=$(folder_of "${ways[0]}")/digest
for way in "${ways[@]:1}"; do
  step="comparing $way with ${ways[0]}"
  actual=$(folder_of "$way")/digest
  if cmp -s "$expected" "$actual"; then
    result="same bits"
  else
    result="DIFFERS in $(grep -vxFf "$expected" "$actual" | sed -E 's/ +[0-9a-f]+$//' | paste -sd, | sed 's/,/, /g')"
  fi
  echo "$way: $result"
  [[ $way == *", contracted" ]] && must="DIFFERS" || must="same"
  [[ $result == "$must"* ]] && continue
  failed+=" \"$way\""
  # Plug-ins for different processors cannot be loaded into one program.
  [[ $way == *-gcc\ * ]] || digest "$way" --against "$(folder_of "${ways[0]}")/lib/lumo/norvaX3.so" || true
done
if [[ -n $failed ]]; then
  step="comparing bits"
  echo "These builds must have the same bits as ${ways[0]}, or other bits if they are contracted:$failed" >&2
  exit 1
fi
echo "All builds compute the bits of ${ways[0]}, except a contracted one, which must differ."
