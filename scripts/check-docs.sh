#!/bin/bash
# Runs the commands that README.md and docs/ tell a reader to type, one after another. The home folder is a temporary
# one, because the commands install files in it. Scripts are not run, because CI runs them separately, and neither are
# commands that need root. Then runs the Python code in docs/, and builds what no command builds.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing dpkg-dev file doxygen "${all_packages[@]}" "${bench_packages[@]}" "${peer_packages[@]}"
make_scratch

step="looking for commands"
mapfile -t commands < <(documented_commands README.md docs/*.md | grep -v -e '^scripts/' -e '^sudo ')
(( ${#commands[@]} > 10 ))
for command in "${commands[@]}"; do
  step="running $command"
  echo "$command"
  HOME=$scratch bash -c "set -eu; $command" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
done
step="running the Python code in docs/"
awk '/^```/ { python = /^```python$/; next } python' docs/*.md >"$scratch/docs.py"
(( $(wc -l <"$scratch/docs.py") > 20 ))
PYTHONPATH=build/release/python /usr/bin/python3 "$scratch/docs.py" | tee "$scratch/output"
step="looking for the message of the exception in docs/python.md in that output"
message=$(sed -n 's/^ *print(error)  # //p' "$scratch/docs.py")
[[ -n $message ]]
grep -qxF "$message" "$scratch/output"
step="writing the reference of the public headers and building the benchmarks"
cmake --build --preset release --target docs bench_passes bench_peers bench_states
for program in bench_passes bench_peers; do
  step="running $program"
  "build/release/bin/$program" --benchmark_min_time=0 >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
done
echo "The commands of README.md and docs/ and the Python code in docs/ work."
