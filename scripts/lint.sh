#!/bin/bash
# Looks for faults without running anything: clang-format, cppcheck and clang-tidy, whose checks .clang-tidy names.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing clang clang-tidy clang-format cppcheck libclang-rt-14-dev
mapfile -t sources < <(git ls-files '*.cpp')

step="checking the format"
git ls-files '*.cpp' '*.hpp' '*.h' | xargs clang-format --dry-run -Werror

step="running cppcheck"
not=(
  --suppress=useStlAlgorithm                    # a loop of one line says what it does
  --suppress=noExplicitConstructor              # a 3-vector in a register converts to and from Eigen's
  --suppress=noConstructor:'kinetra/spatial/*'  # of nested classes it sees the constructor too late
  --suppress=constParameter:'benchmarks/*'      # iterating over the timer changes it
  --suppress=syntaxError:'tests/kinetra/*'      # takes a test's table of types for a syntax error
)
cppcheck --std=c++17 --language=c++ --library=googletest --enable=warning,performance,portability,style "${not[@]}" \
  --inline-suppr --error-exitcode=1 --quiet -j "$(nproc)" -I . "${sources[@]}"

# What ships. The others are built with flags of their own (benchmarks, examples, fixtures) or run under every sanitizer
# (tests); cppcheck has seen them.
step="configuring the preset release"
cmake --preset release >/dev/null
step="running clang-tidy"
printf '%s\n' "${sources[@]}" | grep -vE '^(benchmarks|examples|tests)/' |
  xargs -P "$(nproc)" -I FILE clang-tidy -p build/release --quiet --extra-arg=-std=c++17 FILE 2>/dev/null
echo "No findings by clang-format, cppcheck and clang-tidy in ${#sources[@]} files and their headers."
