"""Reads the counts of callgrind."""

import collections
import itertools
import pathlib
import re


def read_dumps(base):
    """Reads the numbered files that callgrind writes beside --callgrind-out-file=BASE, in their order."""
    for number in itertools.count(1):
        file = pathlib.Path(f"{base}.{number}")
        if not file.exists():
            return
        yield read_dump(file)


def read_dump(file):
    """Returns the function of --dump-after that ended one file, and the number of instructions for each binary file."""
    trigger, names, counts, current = None, {}, collections.Counter(), None
    lines = iter(file.read_text().splitlines())
    for line in lines:
        if line.startswith("desc: Trigger: --dump-after="):
            trigger = line.partition("=")[2]
        elif match := re.match(r"c?ob=(\(\d+\)) ?(.*)", line):  # only the first mention of a file has its name
            number, name = match.groups()
            names.setdefault(number, name)
            if line.startswith("ob="):
                current = names[number]
        elif line.startswith("calls="):
            next(lines)  # repeats what is counted in the function called
        elif re.match(r"[-+*\d]", line):
            counts[current] += int(line.split()[1])
    return trigger, counts
