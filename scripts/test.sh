#!/bin/bash
# Builds the presets release and dev and the thread test of the preset tsan, and runs all their tests. CXX chooses the
# compiler.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing
for preset in release dev tsan; do
  build "$preset"
  step="testing the preset $preset"
  ctest --preset "$preset" -j "$(nproc)"
done
echo "All tests passed in release, dev and tsan."
