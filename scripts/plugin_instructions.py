"""Sorts the instructions that callgrind counted in a plug-in for x86-64, by kind and by function."""

import bisect
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
    listing = run("objdump", "-d", "--no-show-raw-insn", plugin)
    return {int(address, 16): kind(instruction)
            for address, instruction in re.findall(r"^ +([0-9a-f]+):\t(.*)", listing, re.MULTILINE)}


@functools.cache
def functions_by_address(plugin):
    """The addresses at which functions begin, in order, and their names."""
    functions = sorted((int(address, 16), name) for address, name in
                       re.findall(r"^([0-9a-f]+) [tTwW] (.*)", run("nm", "-C", plugin), re.MULTILINE))
    addresses, names = zip(*functions)
    return addresses, [short_name(name) for name in names]


def short_name(name):
    """The name of a function without its type, parameters and namespaces. `run` keeps the name of its class."""
    before = None
    while name != before:  # one level of template arguments in each turn
        before, name = name, re.sub(r"<[^<>]*>", "", name)
    parts = name.partition("(")[0].split(" ")[-1].split("::")
    return "::".join(parts[-2:] if parts[-1] == "run" else parts[-1:])


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def read_counts(plugin, file):
    """How many instructions the plug-in executed, by kind and by function, by one file of callgrind."""
    kinds, functions = collections.Counter(), collections.Counter()
    addresses, names = functions_by_address(plugin)
    for binary, address, count in callgrind.read_entries(file):
        if binary == plugin:
            kinds[kinds_by_address(plugin)[address]] += count
            functions[names[bisect.bisect(addresses, address) - 1]] += count
    if not kinds:
        sys.exit(f"callgrind counted no instruction in {plugin}")
    return kinds, functions
