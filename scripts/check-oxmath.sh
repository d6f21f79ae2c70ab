#!/bin/bash
# Checks that the plug-in works with another math library: builds it with the one in tests/fixtures/othermath and runs
# the tests of the plug-in and of the tools.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing "${all_packages[@]}"
step="configuring with another math library"
cmake --preset release -B build/othermath -DLUMO_OXMATH="$PWD/tests/fixtures/othermath"
step="building with another math library"
cmake --build build/othermath --target tests/plugin/all tests/tools/all
step="testing with another math library"
for folder in plugin tools; do
  ctest --test-dir "build/othermath/tests/$folder" --output-on-failure --no-tests=error -j "$(nproc)"
done
echo "The plug-in works with another math library."
