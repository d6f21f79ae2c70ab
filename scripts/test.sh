#!/bin/bash
# Builds the presets release and dev and the thread test of the preset tsan, and runs all their tests. Then it runs each
# test program of release as one process, with its tests in a random order. CXX chooses the compiler.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing "${all_packages[@]}"
for preset in release dev tsan; do
  build "$preset"
  step="testing the preset $preset"
  ctest --preset "$preset" -j "$(nproc)"
done
for program in build/release/bin/lumo-*-tests; do
  seed=$(( RANDOM + 1 ))
  step="running $program --gtest_shuffle --gtest_random_seed=$seed"
  TEST_TMPDIR=build/release/tests "$program" --gtest_brief=1 --gtest_shuffle --gtest_random_seed="$seed"
done
echo "All tests passed in release, dev and tsan."
