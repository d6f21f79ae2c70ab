#!/usr/bin/env python3
"""Prints the table of scripts/real-time.sh from callgrind's counts, one file a call, and fails when an operation's own
instructions depend on the state. Arguments: what callgrind was given as its file, for each run."""

import re
import sys

import callgrind

BODIES = 16
OPERATIONS = 6


def read_calls(bases):
    """For each operation the calls as (body, instructions of its own, instructions in libm). Operations on a part of the
    robot are called for body 0 to 15 in turn; others have no body. The first call of each run is left out: the caller
    may have yet to be given a matrix."""
    calls = {}
    for base in bases:
        count = {}
        for trigger, counts in callgrind.read_dumps(base):
            if trigger is None:  # the rest of the run
                continue
            operation = re.sub(r".*::", "", trigger.partition("(")[0])
            number = count[operation] = count.get(operation, -1) + 1
            if number == 0:
                continue
            libm = sum(value for file, value in counts.items() if re.search(r"libm[.-]", file))
            body = number % BODIES if "Partial" in operation else None
            calls.setdefault(operation, []).append((body, sum(counts.values()) - libm, libm))
    return calls


def span(values):
    least, most = min(values), max(values)
    return str(least) if least == most else f"{least} to {most}"


def main():
    calls = read_calls(sys.argv[1:])
    print(f"{'operation':34} {'calls':>5} {'of its own':>24}   of sine and cosine")
    for operation in sorted(calls):
        bodies, own, libm = zip(*calls[operation])
        by_body = ", by body" if bodies[0] is not None and min(own) != max(own) else ""
        print(f"{operation:34} {len(own):5} {span(own) + by_body:>24}   {span(libm)}")
    varying = [operation for operation in sorted(calls)
               if len({call[:2] for call in calls[operation]}) > len({body for body, *_ in calls[operation]})]
    for operation in varying:
        print(f"The state changes the count of {operation}")
    if varying or len(calls) != OPERATIONS:
        sys.exit(1)


if __name__ == "__main__":
    main()
