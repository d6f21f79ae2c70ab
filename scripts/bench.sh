#!/bin/bash
# Times the operations of the plug-in, each as the shortest of many short runs. It prints a table.
#   scripts/bench.sh                     beside two other libraries and in Python; draws build/performance.svg
#   scripts/bench.sh --against COMMIT    beside the plug-in of another commit with the same interface
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

case "$#:${1:-}" in
  0:) commit="" packages=("${bench_packages[@]}" "${peer_packages[@]}") others=(bench_peers bench_states lumo_python) ;;
  2:--against)
    packages=("${bench_packages[@]}") others=()
    commit=$(git rev-parse --verify --quiet "$2^{commit}") || refuse "bench.sh: git finds no commit $2 here"
    ;;
  *) refuse "usage: scripts/bench.sh [--against COMMIT]" ;;
esac

install_missing "${packages[@]}"
build release bench_passes "${others[@]}"
plugin=build/release/lib/lumo/norvaX3.so
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/release/CMakeCache.txt)
if [[ -n $commit ]]; then
  folder=build/against/$commit
  step="building the plug-in of $2"
  mkdir -p "$folder/source"
  git archive "$commit" | tar --extract --directory="$folder/source"
  cmake --fresh -S "$folder/source" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
    -DCMAKE_CXX_COMPILER="$compiler"
  cmake --build "$folder" --target lumo_norvaX3
fi

make_scratch
core=$(python3 -c 'import os; print(max(os.sched_getaffinity(0)))')
# Runs a program on one core. Its results go to a file of this round. Its messages are shown only if it fails.
time_program() {
  step="running $2"
  taskset --cpu-list "$core" "build/release/bin/$2" "${@:3}" --benchmark_repetitions=10 --benchmark_min_time=0.003 \
    --benchmark_enable_random_interleaving=true --benchmark_out_format=json \
    --benchmark_out="$scratch/$1.$round.json" >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; return 1; }
}
# Times a copy of a plug-in: where its file happens to be in memory changes its times.
time_plugin() {
  cp "$2" "$scratch/$1.$round.so"
  time_program "$1" bench_passes "--plugin=$scratch/$1.$round.so"
}

echo "Timing on core $core"
for round in {10..29}; do
  if [[ -z $commit ]]; then
    time_plugin now "$plugin"
    time_program peers bench_peers
  elif (( round / 2 % 2 )); then
    time_plugin now "$plugin"
    time_plugin before "$folder/lib/lumo/norvaX3.so"
  else
    time_plugin before "$folder/lib/lumo/norvaX3.so"
    time_plugin now "$plugin"
  fi
done
step="making the table"
echo
python3 scripts/bench_table.py "$scratch" "${2:-}"
if [[ -z $commit ]]; then
  step="timing the Python module"
  echo
  PYTHONPATH=build/release/python /usr/bin/python3 benchmarks/bench_python.py
fi
echo "Compiled by $("$compiler" --version | head -n 1)"
