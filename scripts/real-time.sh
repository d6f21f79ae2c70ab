#!/bin/bash
# Checks that the plug-in can be used in a control loop. The number of instructions of each compute operation must be
# the same in states at rest, in usual states and in extreme states. There must be no system calls and no locks.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing python3 strace valgrind
CXX=g++ build release # docs/real-time.md has the table for g++

digest=build/release/bin/lumo-digest
plugin=build/release/lib/lumo/norvaX3.so
make_scratch

# Instructions. callgrind writes one file of counts for each call of an operation.
step="counting instructions"
mapfile -t operations < <(nm -C --defined-only "$plugin" | sed -n 's/^[^ ]* [tTwW] \(lumo::Kinetra.*::compute.*\)/\1/p')
(( ${#operations[@]} == 6 )) || { echo "expected 6 compute operations, found ${#operations[@]}" >&2; exit 1; }
options=("--toggle-collect=lumo::KinetraRigidBodySystem<*>::compute*")
for operation in "${operations[@]}"; do options+=("--dump-after=$operation"); done
for scale in 0 1 30000; do
  valgrind --quiet --tool=callgrind --callgrind-out-file="$scratch/$scale" "${options[@]}" \
    "$digest" --states 5 --scale "$scale" >/dev/null
done

echo "Instructions of a call in states at rest, usual states (within 3 rad) and extreme states (within 90,000 rad):"
echo
python3 scripts/real_time_table.py "$scratch/0" "$scratch/1" "$scratch/30000" | tee "$scratch/table"
step="comparing the table with that of docs/real-time.md, line by line"
diff <(sed -n '/^operation  *calls/,/^```/{/^```/!p}' docs/real-time.md) "$scratch/table"

# System calls. The number of system calls of the program must not depend on the number of states.
step="looking for system calls"
system_calls() {
  strace --follow-forks --output="$scratch/calls" "$digest" --states "$1" >/dev/null
  wc -l <"$scratch/calls"
}

echo
system_calls="make no system call"
if strace --output="$scratch/calls" true 2>/dev/null; then
  few=$(system_calls 10)
  many=$(system_calls 2000)
  echo "A program that goes through 10 states makes $few system calls, through 2,000 states $many."
  (( few > 0 && few == many ))
else
  system_calls="were not checked for system calls"
  echo "This machine does not allow programs to be traced, so system calls are not checked."
fi

# Locks. The plug-in must refer to no locking function and contain no locked instruction, such as an atomic counter
# needs.
step="looking for locks"
locks=$(nm -D --undefined-only "$plugin" | grep -cE 'pthread|mtx_|cnd_|sem_|futex|guard_acquire|call_once' || true)
locked=$(objdump -d --no-show-raw-insn "$plugin" | grep -cE '\slock\s|\sxchg .*\(' || true)
echo "The plug-in refers to $locks locking functions and contains $locked locked instructions."
(( locks == 0 && locked == 0 ))

echo "The number of instructions does not depend on the state. The compute operations take no locks and $system_calls."
