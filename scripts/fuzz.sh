#!/bin/bash
# Makes random sequences of calls with any floats, under sanitizers, for a number of seconds: 60, or the argument.
# build/fuzz/corpus keeps what it finds to try, and build/fuzz the sequence that shows a fault.
set -euo pipefail
seconds=${1:-60}
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

CXX=clang++ install_missing
CXX=clang++ build fuzz
mkdir -p build/fuzz/corpus
step="fuzzing; the sequence of calls is build/fuzz/crash-..., run it by: build/fuzz/bin/lumo-fuzz FILE"
build/fuzz/bin/lumo-fuzz -max_total_time="$seconds" -max_len=2000 -artifact_prefix=build/fuzz/ -verbosity=0 -use_cmp=0 \
  -print_final_stats=1 build/fuzz/corpus tests/fuzz/corpus
echo "No fault found in $seconds s."
