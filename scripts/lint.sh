#!/bin/bash
# Runs the static checks: clang-format, cppcheck, and clang-tidy with the checks that .clang-tidy names.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing clang clang-tidy clang-format cppcheck libclang-rt-14-dev "${all_packages[@]}"
mapfile -t sources < <(git ls-files '*.cpp')

step="checking the format"
git ls-files '*.cpp' '*.hpp' '*.h' | xargs clang-format --dry-run -Werror

step="compiling each header alone"
git ls-files 'kinetra/*.hpp' 'models/*.hpp' 'service/*.hpp' 'host/*.hpp' |
  xargs -P "$(nproc)" -I FILE sh -c \
    'echo "#include <FILE>" | clang++ -std=c++17 -fsyntax-only -I. -Ioxmath -isystem /usr/include/eigen3 -x c++ -'

step="running cppcheck"
not=(
  --suppress=useStlAlgorithm                    # a loop of one line is as clear as an algorithm
  --suppress=noExplicitConstructor              # a 3-vector in a register converts to and from a vector of Eigen
  --suppress=noConstructor:'kinetra/spatial/*'  # cppcheck misses the constructors of nested classes
  --suppress=constParameter:'benchmarks/*'      # cppcheck does not see that iterating over the timer changes it
  --suppress=syntaxError:'tests/kinetra/*'      # cppcheck does not understand the table of types in a test
  --suppress=internalAstError:tests/kinetra/spatial/mixed_kinds.cpp  # nor the return types of the lambdas in this one
)
cppcheck --std=c++17 --language=c++ --library=googletest --enable=warning,performance,portability,style "${not[@]}" \
  --inline-suppr --error-exitcode=1 --quiet -j "$(nproc)" -I . "${sources[@]}"

# clang-tidy checks only what is installed and the tools. Benchmarks, examples, fixtures and the page are built with
# other options, and the tests run under the sanitizers; cppcheck has checked all of them.
step="configuring the preset release"
cmake --preset release >/dev/null
step="running clang-tidy"
printf '%s\n' "${sources[@]}" | grep -vE '^(benchmarks|examples|tests|web)/' |
  xargs -P "$(nproc)" -I FILE clang-tidy -p build/release --quiet --extra-arg=-std=c++17 FILE 2>/dev/null
echo "clang-format, cppcheck and clang-tidy report nothing in ${#sources[@]} files and their headers."
