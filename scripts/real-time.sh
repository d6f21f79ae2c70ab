#!/bin/bash
# Checks that the plug-in can be used in a control loop. The number of instructions of each compute operation must be
# the same in states at rest, in usual states and in extreme states. There must be no system calls and no locks.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing strace valgrind
build release lumo_norvaX3 lumo-digest

digest=build/release/bin/lumo-digest
plugin=build/release/lib/lumo/norvaX3.so
make_scratch

# callgrind writes a file of counts for each call of an operation. Its name is that of its run and a number.
step="counting instructions"
mapfile -t operations < <(nm -C --defined-only "$plugin" | sed -n 's/^[^ ]* [tTwW] \(lumo::Kinetra.*::compute.*\)/\1/p')
for scale in 0 1 30000; do
  valgrind --quiet --tool=callgrind --toggle-collect="lumo::KinetraRigidBodySystem<*>::compute*" \
    "${operations[@]/#/--dump-after=}" --callgrind-out-file="$scratch/$scale" \
    "$digest" --states 5 --scale "$scale" >/dev/null
done

# The calls are the same in each of the 15 states. Those in the first state of a run are left out, because one of them
# allocates the caller's matrix.
echo "Instructions of a call in states at rest, usual states (within 3 rad) and extreme states (within 90,000 rad):"
ls -v "$scratch"/*.* | xargs awk '
  BEGIN { calls = 0 }
  /^desc: Trigger: --dump-after=/ { sub(/\(.*/, ""); sub(/.*::/, ""); operation = $0 }
  /^totals: / && operation { name[calls] = operation; count[calls++] = $2; operation = "" }
  END {
    if (calls == 0 || calls % 15) {
      print "counted " calls " calls, which is no multiple of 15 states" >"/dev/stderr"
      exit 1
    }
    in_state = calls / 15
    for (i = 0; i < calls; ++i) {
      if (i % (5 * in_state) < in_state) continue
      first = in_state + i % in_state
      operation = name[i]
      if (name[first] != operation || count[first] != count[i] || count[i] == 0) {
        failed = 1
        wrong[operation] = "  depends on the state or was not counted"
      }
      if (!number[operation]++) least[operation] = most[operation] = count[i]
      if (count[i] < least[operation]) least[operation] = count[i]
      if (count[i] > most[operation]) most[operation] = count[i]
    }
    for (operation in number) {
      printf "%-32s %4d calls %6d to %d%s\n", operation, number[operation], least[operation], most[operation],
             wrong[operation] | "sort"
    }
    exit failed
  }'

# The number of system calls of a program must not depend on the number of states.
echo
step="looking for system calls"
system_calls() {
  strace --follow-forks --output="$scratch/calls" "$digest" --states "$1" >/dev/null
  wc -l <"$scratch/calls"
}
checked="take no locks and make no system call"
if strace --output="$scratch/calls" true 2>/dev/null; then
  few=$(system_calls 10)
  many=$(system_calls 2000)
  echo "A program that goes through 10 states makes $few system calls, through 2,000 states $many."
  (( few > 0 && few == many ))
else
  checked="take no locks"
  echo "This machine does not allow programs to be traced, so system calls are not checked."
fi

# An atomic counter, for example, needs a locked instruction.
step="looking for locks"
locks=$(nm -D --undefined-only "$plugin" | grep -cE 'pthread|mtx_|cnd_|sem_|futex|guard_acquire|call_once' || true)
locked=$(objdump -d --no-show-raw-insn "$plugin" | grep -cE '\slock\s|\sxchg .*\(' || true)
echo "The plug-in refers to $locks locking functions and contains $locked locked instructions."
(( locks == 0 && locked == 0 ))
echo "The number of instructions does not depend on the state. The compute operations $checked."
