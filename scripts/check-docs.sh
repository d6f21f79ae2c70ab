#!/bin/bash
# Runs the commands that README.md and docs/ tell a reader to type, one after another, with an empty home folder. Leaves
# out the scripts, because CI runs them anyway, and the commands that need root.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing dpkg-dev file doxygen
make_scratch

step="looking for commands"
mapfile -t commands < <(documented_commands README.md docs/*.md | grep -v -e '^scripts/' -e '^sudo ')
(( ${#commands[@]} > 10 ))
for command in "${commands[@]}"; do
  step="running $command"
  echo "$command"
  HOME=$scratch bash -c "set -eu; $command" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
done
step="writing the reference of the public headers"
cmake --build --preset release --target docs
echo "The commands of README.md and docs/ work."
