#!/usr/bin/env python3
"""Prints the table of scripts/real-time.sh, and fails if the number of instructions of an operation depends on the
state. Each argument is the name of the output file of one run of callgrind. The counts of each call are in a separate
file, whose name is this name with a number."""

import sys

import callgrind

BODIES = 16
OPERATIONS = 6


def read_calls(bases):
    """Returns for each operation its calls as (body, instructions). Operations on a part of the robot are called for
    the bodies 0 to 15 in turn; the others have no body. The first call of each run is left out, because it may allocate
    the caller's matrix."""
    calls = {}
    for base in bases:
        count = {}
        for trigger, counts in callgrind.read_dumps(base):
            if trigger is None:  # the rest of the run
                continue
            operation = trigger.partition("(")[0].rpartition("::")[2]
            number = count[operation] = count.get(operation, -1) + 1
            if number == 0:
                continue
            body = number % BODIES if "Partial" in operation else None
            calls.setdefault(operation, []).append((body, sum(counts.values())))
    return calls


def span(values):
    least, most = min(values), max(values)
    return str(least) if least == most else f"{least} to {most}"


def main():
    calls = read_calls(sys.argv[1:])
    print(f"{'operation':34} {'calls':>5}   instructions")
    for operation in sorted(calls):
        bodies, counts = zip(*calls[operation])
        by_body = ", by body" if bodies[0] is not None and min(counts) != max(counts) else ""
        print(f"{operation:34} {len(counts):5}   {span(counts)}{by_body}")
    varying = [operation for operation in sorted(calls)
               if len(set(calls[operation])) > len({body for body, _ in calls[operation]})]
    for operation in varying:
        print(f"The number of instructions of {operation} depends on the state.")
    if varying or len(calls) != OPERATIONS:
        sys.exit(1)


if __name__ == "__main__":
    main()
