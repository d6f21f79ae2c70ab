#!/bin/bash
# Shows that the compute operations do constant work: counts the instructions of every call over states at rest, usual
# and extreme, and looks for system calls and locks.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing valgrind strace
build release

digest=build/release/bin/lumo-digest
plugin=build/release/lib/lumo/norvaX3.so
folder=build/real-time
rm -rf "$folder"
mkdir -p "$folder"

# Instructions. Every call of an operation becomes one file of counts. What runs in the C library's libm, the sines and
# cosines, is told apart.
step="counting instructions"
mapfile -t operations < <(nm -C --defined-only "$plugin" | sed -n 's/^[^ ]* [tTwW] \(lumo::Kinetra.*::compute.*\)/\1/p')
(( ${#operations[@]} == 6 )) || { echo "expected 6 compute operations, found ${#operations[@]}" >&2; exit 1; }
options=("--toggle-collect=lumo::KinetraRigidBodySystem<*>::compute*")
for operation in "${operations[@]}"; do options+=("--dump-after=$operation"); done
for scale in 0 1 30000; do
  valgrind --quiet --tool=callgrind --callgrind-out-file="$folder/$scale" "${options[@]}" \
    "$digest" --states 5 --scale "$scale" >/dev/null
  find "$folder" -name "$scale.*" | sort -V | xargs awk '
    function finish() {
      # Operations on a part of the robot are called for body 0 to 15 in turn. The first call, in which the caller
      # may have yet to be given a matrix, is left out.
      body = operation ~ /Partial/ ? calls[operation] % 16 : "-"
      if (calls[operation]++) print operation, body, own, libm
      own = libm = 0
    }
    FNR == 1 && NR > 1 { finish() }
    /^desc: Trigger: --dump-after=/ { sub(/\(.*/, ""); sub(/.*::/, ""); operation = $0 }
    match($0, /^c?ob=\([0-9]+\)/) {
      id = substr($0, 1, RLENGTH)
      sub(/^.*=/, "", id)
      if (length($0) > RLENGTH) name[id] = substr($0, RLENGTH + 2)
      if (/^ob=/) object = id
    }
    /^calls=/ { getline; next }  # the next line repeats what the callee is charged
    /^[0-9+*-]/ { if (name[object] ~ /libm[.-]/) libm += $2; else own += $2 }
    END { finish() }' >>"$folder/counts"
done

echo "Instructions of a call, over states at rest, usual (angles within 3 rad) and extreme (within 90,000 rad):"
echo
sort -s -k 1,1 "$folder/counts" | awk '
  function span(least, most) { return least == most ? least : least " to " most }
  {
    op = $1
    if (!(op in calls)) { least[op] = $3; libm_least[op] = $4; order[++n] = op }
    calls[op]++
    if ($3 < least[op]) least[op] = $3
    if ($3 > most[op]) most[op] = $3
    if ($4 < libm_least[op]) libm_least[op] = $4
    if ($4 > libm_most[op]) libm_most[op] = $4
    if (op $2 in first && first[op $2] != $3) varies[op]
    first[op $2] = $3
    if ($2 != "-") by_body[op] = least[op] != most[op] ? ", by body" : ""
  }
  END {
    printf "%-34s %5s %24s   %s\n", "operation", "calls", "of its own", "of sine and cosine"
    for (i = 1; i <= n; ++i) {
      op = order[i]
      own = span(least[op], most[op]) by_body[op]
      printf "%-34s %5d %24s   %s\n", op, calls[op], own, span(libm_least[op], libm_most[op])
    }
    for (op in varies) { print "The state changes the count of " op; failed = 1 }
    exit failed || n != 6
  }'

# System calls. The program makes the same ones however many states it goes through.
step="looking for system calls"
system_calls() {
  strace --follow-forks --output="$folder/calls" "$digest" --states "$1" >/dev/null
  wc -l <"$folder/calls"
}

echo
system_calls="make no system call"
if strace --output="$folder/calls" true 2>/dev/null; then
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
