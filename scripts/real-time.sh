#!/bin/bash
# Shows that the compute operations do constant work: counts the instructions of every call over states at rest, usual
# and extreme, and looks for system calls and locks.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing python3 strace valgrind
CXX=g++ build release # its table is on record

digest=build/release/bin/lumo-digest
plugin=build/release/lib/lumo/norvaX3.so
make_scratch

# Instructions. Every call of an operation becomes one file of counts. What runs in the C library's libm, the sines and
# cosines, is told apart.
step="counting instructions"
mapfile -t operations < <(nm -C --defined-only "$plugin" | sed -n 's/^[^ ]* [tTwW] \(lumo::Kinetra.*::compute.*\)/\1/p')
(( ${#operations[@]} == 6 )) || { echo "expected 6 compute operations, found ${#operations[@]}" >&2; exit 1; }
options=("--toggle-collect=lumo::KinetraRigidBodySystem<*>::compute*")
for operation in "${operations[@]}"; do options+=("--dump-after=$operation"); done
for scale in 0 1 30000; do
  valgrind --quiet --tool=callgrind --callgrind-out-file="$scratch/$scale" "${options[@]}" \
    "$digest" --states 5 --scale "$scale" >/dev/null
done

echo "Instructions of a call, over states at rest, usual (angles within 3 rad) and extreme (within 90,000 rad):"
echo
python3 scripts/real_time_table.py "$scratch/0" "$scratch/1" "$scratch/30000" | tee "$scratch/table"
step="comparing the table with that of docs/real-time.md, line by line"
diff <(sed -n '/^operation /,/^```/{/^```/!p}' docs/real-time.md) "$scratch/table"

# System calls. The program makes the same ones however many states it goes through.
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
  echo "System calls of a program that goes through 10 states: $few; through 2,000 states: $many."
  (( few > 0 && few == many ))
else
  system_calls="may make system calls, for all that this machine can tell"
  echo "This machine does not let programs be traced: system calls are left out."
fi

# Locks. The plug-in asks other libraries for none and has no locked instruction, such as an atomic counter's.
step="looking for locks"
locks=$(nm -D --undefined-only "$plugin" | grep -cE 'pthread|mtx_|cnd_|sem_|futex|guard_acquire|call_once' || true)
locked=$(objdump -d --no-show-raw-insn "$plugin" | grep -cE '\slock\s|\sxchg .*\(' || true)
echo "Locking functions that the plug-in refers to: $locks; its locked instructions: $locked."
(( locks == 0 && locked == 0 ))

echo "The compute operations do constant work, take no lock and $system_calls."
