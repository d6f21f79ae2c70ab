#!/bin/bash
# Times the plug-in and two other libraries on the same work and prints one table.
#   scripts/bench.sh                  nanoseconds, medians of 15 runs on one core; about two minutes
#   scripts/bench.sh --instructions   instructions counted by callgrind, the same in every run
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

step="reading its options"
if (( $# > 1 )) || [[ ${1:---instructions} != --instructions ]]; then
  echo "usage: scripts/bench.sh [--instructions]" >&2
  exit 2
fi

packages=(libbenchmark-dev python3 util-linux)
(( $# == 0 )) || packages+=(valgrind)
install_missing "${packages[@]}"
for peer in libmujoco-dev liborocos-kdl-dev; do
  install_missing "$peer" || echo "$peer cannot be installed: left out."
done
build bench

make_scratch

# Runs one program. What it says is of interest only when it fails.
run() {
  step="running ${*: -1}"
  "$@" >"$scratch/names" 2>"$scratch/log" || { cat "$scratch/log" >&2; return 1; }
}

if (( $# )); then
  for program in bench_passes bench_peers; do
    run valgrind --quiet --tool=callgrind --callgrind-out-file="$scratch/$program" \
      --toggle-collect=lumo_countedLoop --dump-after=lumo_countedLoop build/bench/bin/$program --count
    mv "$scratch/names" "$scratch/$program.names"
  done
else
  core=$(python3 -c 'import os; print(max(os.sched_getaffinity(0)))')
  for round in 1 2 3; do
    echo "Timing on core $core, round $round of 3"
    for program in bench_passes bench_peers; do
      run taskset --cpu-list "$core" build/bench/bin/$program --benchmark_repetitions=5 \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.1 --benchmark_out_format=json \
        --benchmark_out="$scratch/$program.$round.json"
    done
  done
fi

step="making the table"
echo
python3 scripts/bench_table.py "$scratch"
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/bench/CMakeCache.txt)
echo "Compiled by $("$compiler" --version | head -n 1)"
