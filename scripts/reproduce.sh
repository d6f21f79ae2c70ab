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
wide="-march=x86-64-v3"
# All builds are compared with the first one. Its lumo-digest loads the plug-ins of the others, except those that are
# cross-compiled for another processor, which is emulated. s390x is big-endian.
ways=("gcc -O3" "clang -O3" "gcc -O0" "gcc -O3 $wide")
packages=(clang)
if [[ -n $all ]]; then
  ways=({gcc,clang}" -O"{3,2,0}{," $wide"} {aarch64,riscv64,s390x}"-gcc -O"{3,2,0} WebAssembly)
  packages+=(qemu-user g++-{aarch64,riscv64,s390x}-linux-gnu)
fi
install_missing "${packages[@]}"

if grep -qw avx2 /proc/cpuinfo && grep -qw fma /proc/cpuinfo; then
  # This build fuses products and sums, so its bits must differ. It shows that the comparison can fail.
  ways+=("gcc -O3 $wide, contracted")
else
  echo "This processor has no AVX2 and FMA, so the builds with $wide are left out."
  mapfile -t ways < <(printf '%s\n' "${ways[@]}" | grep -v -e "$wide")
fi

folder_of() { tr -s ' ,=' '-' <<<"$folder/$1"; }

# Builds the plug-in in one way, which is named by its compiler and flags.
build_way() {
  local way=$1 compiler=${1%% *} flags=${1#* } targets=(lumo_norvaX3) options=()
  case $compiler in
    gcc) compiler=g++ ;;
    clang) compiler=clang++ ;;
    WebAssembly) scripts/web.sh && mkdir -p "$(folder_of "$way")"; return ;;
    *) # The header-only libraries of this machine are used.
      flags+=" -idirafter /usr/include"
      options=(-D CMAKE_SYSTEM_NAME=Linux -D CMAKE_SYSTEM_PROCESSOR="${compiler%-gcc}"
               -D fmt_DIR="/usr/lib/$(g++ -dumpmachine)/cmake/fmt")
      compiler=${compiler%-gcc}-linux-gnu-g++
      targets+=(lumo-digest) ;;
  esac
  [[ $way != "${ways[0]}" ]] || targets+=(lumo-digest)
  # This option must come after the one that forbids contraction.
  if [[ $way == *", contracted" ]]; then
    flags=${flags%, contracted}
    options+=(-D CMAKE_CXX_COMPILE_OBJECT="<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -ffp-contract=fast \
                                           -o <OBJECT> -c <SOURCE>")
  fi
  cmake -S . -B "$(folder_of "$way")" -G Ninja -D BUILD_TESTING=OFF -D CMAKE_CXX_COMPILER="$compiler" \
    -D CMAKE_CXX_FLAGS="$flags" "${options[@]}"
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
