"""Reads the counts of callgrind."""

import collections
import itertools
import pathlib
import re


def dump_files(base):
    """The numbered files that callgrind writes beside --callgrind-out-file=BASE, in their order."""
    for number in itertools.count(1):
        file = pathlib.Path(f"{base}.{number}")
        if not file.exists():
            return
        yield file


def read_dumps(base):
    """For each file, the function of --dump-after that ended it, and the number of instructions by binary file."""
    for file in dump_files(base):
        trigger = re.search(r"^desc: Trigger: --dump-after=(.*)", file.read_text(), re.MULTILINE)
        counts = collections.Counter()
        for binary, _, count in read_entries(file):
            counts[binary] += count
        yield trigger and trigger[1], counts


def read_entries(file):
    """Each entry of one file: the binary file, the address in it (if callgrind ran with --dump-instr=yes), and how many
    instructions were executed there."""
    names, binary, address = {}, None, 0
    lines = iter(file.read_text().splitlines())
    for line in lines:
        if match := re.match(r"(c?)ob=(\(\d+\)) ?(.*)", line):
            called, number, name = match.groups()
            names.setdefault(number, name)  # only the first mention of a file has its name
            binary = binary if called else names[number]
        elif line.startswith("calls="):
            address = moved(address, next(lines))  # its count is that of the function called, which is counted there
        elif re.match(r"[-+*\d]", line):
            address = moved(address, line)
            yield binary, address, int(line.split()[-1])


def moved(address, line):
    """The address that a line begins with: *, the same as before; a difference from it; or an absolute one."""
    first = line.split()[0]
    if first == "*":
        return address
    return address + int(first) if first[0] in "+-" else int(first, 0)
