#!/bin/bash
# Times the operations of the plug-in, each as the shortest of many short runs. It prints a table.
#   scripts/bench.sh                     beside two other libraries; also draws build/bench/performance.svg
#   scripts/bench.sh --against COMMIT    beside the plug-in of another commit with the same interface
#   scripts/bench.sh --instructions      counts instructions with callgrind, which are the same in every run
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

refuse() {
  trap - EXIT
  echo "$1" >&2
  exit 2
}
case "$#:${1:-}" in
  0:) mode=times ;;
  1:--instructions) mode=instructions ;;
  2:--against)
    mode=against
    commit=$(git rev-parse --verify --quiet "$2^{commit}") || refuse "bench.sh: git finds no commit $2 here"
    ;;
  *) refuse "usage: scripts/bench.sh [--against COMMIT | --instructions]" ;;
esac

packages=(libbenchmark-dev python3 util-linux)
[[ $mode != instructions ]] || packages+=(valgrind)
install_missing "${packages[@]}"
if [[ $mode != against ]]; then
  for peer in libmujoco-dev liborocos-kdl-dev; do
    install_missing "$peer" || echo "$peer cannot be installed and is left out."
  done
fi
build bench
plugin=$(realpath build/bench/lib/lumo/norvaX3.so)
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/bench/CMakeCache.txt)

make_scratch

# Runs one program. Its output goes to $scratch/names. Its messages are shown only if it fails.
run() {
  step="running $(basename "$1")"
  "$@" >"$scratch/names" 2>"$scratch/log" || { cat "$scratch/log" >&2; return 1; }
}

# Times one program, on one core, into a file of results. A plug-in is copied first: where its file happens to be in
# memory changes its times.
rounds=20
core=$(python3 -c 'import os; print(max(os.sched_getaffinity(0)))')
time_passes() {
  cp "$2" "$scratch/$1.$round.so"
  time_program "$1" bench_passes "--plugin=$scratch/$1.$round.so"
}
time_program() {
  run taskset --cpu-list "$core" "build/bench/bin/$2" "${@:3}" --benchmark_repetitions=10 \
    --benchmark_min_time=0.003 --benchmark_enable_random_interleaving=true --benchmark_out_format=json \
    --benchmark_out="$scratch/$1.$round.json"
}

case $mode in
  times)
    echo "Timing on core $core"
    for (( round = 0; round < rounds; ++round )); do
      time_passes bench_passes "$plugin"
      time_program bench_peers bench_peers
    done
    arguments=(build/bench/performance.svg)
    ;;
  against)
    folder=build/against/$commit
    step="building the plug-in of $2"
    mkdir -p "$folder/source"
    git archive "$commit" | tar --extract --directory="$folder/source"
    cmake --fresh -S "$folder/source" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
      -DCMAKE_CXX_COMPILER="$compiler"
    cmake --build "$folder" --target lumo_norvaX3
    declare -A plugins=([before]=$folder/lib/lumo/norvaX3.so [now]=$plugin)
    echo "Timing on core $core"
    for (( round = 0; round < rounds; ++round )); do
      order=(before now)
      (( round / 2 % 2 == 0 )) || order=(now before)
      for side in "${order[@]}"; do time_passes "$side" "${plugins[$side]}"; done
    done
    arguments=("$2")
    ;;
  instructions)
    for program in bench_passes bench_peers; do
      run valgrind --quiet --tool=callgrind --dump-instr=yes --callgrind-out-file="$scratch/$program" \
        --toggle-collect=lumo_countedLoop --dump-after=lumo_countedLoop build/bench/bin/$program --count
      mv "$scratch/names" "$scratch/$program.names"
    done
    arguments=("$plugin")
    ;;
esac

step="making the table"
echo
python3 scripts/bench_table.py "$mode" "$scratch" "${arguments[@]}"
echo "Compiled by $("$compiler" --version | head -n 1)"
