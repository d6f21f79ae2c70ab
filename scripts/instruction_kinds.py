"""Tells the kinds of instructions apart that callgrind counted in a plug-in for x86-64."""

import collections
import functools
import re
import subprocess
import sys

import callgrind

KINDS = ["multiply", "add", "shuffle", "other vector", "load", "store", "move", "scalar"]


def kind(instruction):
    """The kind of one instruction as objdump prints it. Everything without a vector register is scalar: addresses,
    counters, calls and jumps, and floats copied through other registers. A division counts as a multiplication, and a
    subtraction as an addition. An operation that reads an operand from memory is not a load as well."""
    name, _, operands = re.sub(r"[#<].*", "", instruction).strip().partition(" ")
    operands = operands.strip()
    if "%xmm" not in operands:
        return "scalar"
    if name in ("pxor", "xorps") and len(set(operands.split(","))) == 1:  # sets a register to zero
        return "move"
    if re.match(r"(mul|div)[ps][sd]", name):
        return "multiply"
    if re.match(r"(add|sub)[ps][sd]", name):
        return "add"
    if re.match(r"p?shuf|p?unpck|movhl|movlh", name):
        return "shuffle"
    if name.startswith("mov"):
        if "(" in operands:
            return "store" if operands.endswith(")") else "load"
        if operands.count("%xmm") < 2:  # to or from a scalar register
            return "other vector"
        return "shuffle" if name in ("movss", "movsd", "movq") else "move"
    return "other vector"


@functools.cache
def kinds_by_address(plugin):
    lines = subprocess.run(["objdump", "-d", "--no-show-raw-insn", plugin], capture_output=True, text=True, check=True)
    return {int(address, 16): kind(instruction)
            for address, instruction in re.findall(r"^ +([0-9a-f]+):\t(.*)", lines.stdout, re.MULTILINE)}


def read_kinds(plugin, file):
    """How many instructions of each kind the plug-in executed, by one file of callgrind."""
    counts = collections.Counter()
    for binary, address, count in callgrind.read_entries(file):
        if binary == plugin:
            counts[kinds_by_address(plugin)[address]] += count
    if not counts:
        sys.exit(f"callgrind counted no instruction in {plugin}")
    return counts
