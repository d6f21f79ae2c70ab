#!/usr/bin/env python3
"""Prints what scripts/bench.sh measured, from a folder of its results.

bench_table.py times FOLDER PICTURE          our times beside those of other libraries; also draws them
bench_table.py against FOLDER COMMIT         the times of two plug-ins
bench_table.py instructions FOLDER PLUGIN    instructions in place of times, then their kinds and functions
"""

import json
import math
import pathlib
import re
import sys

import bench_picture
import callgrind
import plugin_instructions

PEERS = ["MuJoCo", "Orocos KDL"]
STATES = 64  # how often a counted loop runs each row


def read_times(folder, program):
    """For each row of a program the shortest time (ns) of every round, and the context that the program reports."""
    rows, context = {}, {}
    files = sorted(folder.glob(f"{program}.*.json"), key=lambda file: int(file.name.split(".")[-2]))
    for file in files:
        result = json.loads(file.read_text())
        context.update(result["context"])
        shortest = {}
        for run in sorted(result["benchmarks"], key=lambda run: run["family_index"]):
            if run["run_type"] == "iteration":
                name = run["run_name"]
                shortest[name] = min(run["cpu_time"], shortest.get(name, math.inf))
        for name, time in shortest.items():
            rows.setdefault(name, []).append(time)
    return rows, context


def halves(rounds):
    """The shortest times of the odd and of the even rounds. How far they are apart tells how far to trust them."""
    return min(rounds[::2]), min(rounds[1::2])


def print_repeatability(differences, what):
    worst = max(differences, key=differences.get)
    print(f"{what} of odd and even rounds differ by {differences[worst]:.1%} at most, in {worst}"
          + ("; this machine is too busy for a fair comparison" if differences[worst] > 0.05 else ""))


def print_table(rows):
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    rows.insert(1, ["-" * widths[0]] + ["-" * (width - 1) + ":" for width in widths[1:]])
    for row in rows:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        print("| " + " | ".join(cells) + " |")


def print_beside_peers(values, unit):
    """Our rows beside the floor and the peers, whose rows are named PEER/OPERATION."""
    peers = [peer for peer in PEERS if any(name.startswith(peer + "/") for name in values)]
    rows = [["operation", unit, "x floor"]]
    for peer in peers:
        rows[0] += [peer, "ratio"]
    for name, value in values.items():
        if "/" in name:
            continue
        row = [name, f"{value:.0f}", f"{value / values['floor']:.2f}"]
        for peer in peers:
            theirs = values.get(f"{peer}/{name}")
            row += [f"{theirs:.0f}", f"{theirs / value:.1f}"] if theirs else ["", ""]
        rows.append(row)
    print_table(rows)


def times(folder, picture):
    rows, context = {}, {}
    for program in ["bench_passes", "bench_peers"]:
        more_rows, more_context = read_times(folder, program)
        rows.update(more_rows)
        context.update(more_context)
    values = {name: min(rounds) for name, rounds in rows.items()}
    print_beside_peers(values, "ns")
    print()
    for peer in PEERS:
        print(f"{peer}: {context.get(peer, 'left out')}")
    spread = {name: max(halves(rounds)) / min(rounds) - 1 for name, rounds in rows.items()}
    print_repeatability(spread, "The times")
    pathlib.Path(picture).write_text(bench_picture.draw(values, [peer for peer in PEERS if peer in context]))
    print(f"{picture} shows the same as a picture.")


def against(folder, commit):
    before, _ = read_times(folder, "before")
    now, _ = read_times(folder, "now")
    rows, spread = [["operation", f"ns, {commit}", "ns, now", f"now / {commit}"]], {}
    for name in now:
        if name == "floor":  # is not taken in the plug-in
            continue
        rows.append([name, f"{min(before[name]):.0f}", f"{min(now[name]):.0f}",
                     f"{min(now[name]) / min(before[name]):.3f}"])
        ratios = [ours / theirs for ours, theirs in zip(halves(now[name]), halves(before[name]))]
        spread[name] = max(ratios) / min(ratios) - 1
    print_table(rows)
    print()
    print_repeatability(spread, "The ratios")


def instructions(folder, plugin):
    values, kinds, functions = {}, {}, {}
    for names in sorted(folder.glob("*.names")):
        for name, file in zip(names.read_text().splitlines(), callgrind.dump_files(names.with_suffix(""))):
            values[name] = sum(count for _, _, count in callgrind.read_entries(file)) / STATES
            if re.match("compute|controlCycle", name):
                kinds[name], functions[name] = plugin_instructions.read_counts(plugin, file)
    print_beside_peers(values, "instructions")
    print()
    rows = [["in the plug-in", "all"] + plugin_instructions.KINDS]
    for name, counts in kinds.items():
        numbers = [sum(counts.values())] + [counts[kind] for kind in plugin_instructions.KINDS]
        rows.append([name] + [f"{number / STATES:.0f}" for number in numbers])
    print_table(rows)
    print()
    rows = [["in the plug-in", "function", "instructions"]]
    for name, counts in functions.items():
        rows += [[name, function, f"{count / STATES:.0f}"] for function, count in counts.most_common()
                 if count > 0.01 * sum(counts.values())]
    print_table(rows)


if __name__ == "__main__":
    {"times": times, "against": against, "instructions": instructions}[sys.argv[1]](pathlib.Path(sys.argv[2]),
                                                                                    sys.argv[3])
