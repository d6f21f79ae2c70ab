#!/bin/bash
# Runs the fuzzer for 60 seconds, or for the number of seconds in the argument. The fuzzer makes random sequences of
# calls with any floats under sanitizers. It adds sequences that reach new code to build/fuzz/corpus, and it writes a
# sequence that causes an error to build/fuzz.
set -euo pipefail
seconds=${1:-60}
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
[[ $seconds =~ ^[0-9]+$ ]] || refuse "usage: scripts/fuzz.sh [SECONDS]"

CXX=clang++ install_missing "${all_packages[@]}"
CXX=clang++ build fuzz
mkdir -p build/fuzz/corpus
step="fuzzing; to run the sequence again: build/fuzz/bin/lumo-fuzz build/fuzz/crash-..."
build/fuzz/bin/lumo-fuzz -max_total_time="$seconds" -max_len=2000 -artifact_prefix=build/fuzz/ -verbosity=0 -use_cmp=0 \
  -print_final_stats=1 build/fuzz/corpus tests/fuzz/corpus
echo "The fuzzer found no error in $seconds s."
