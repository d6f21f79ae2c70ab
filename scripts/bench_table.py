#!/usr/bin/env python3
"""Prints the table of scripts/bench.sh from a folder of results: Google Benchmark's JSON, or callgrind's counts."""

import json
import pathlib
import statistics
import sys

import callgrind

PEERS = ["MuJoCo", "Orocos KDL"]
STATES = 64  # how often a counted loop runs each row


def read_times(folder):
    """Medians of all rows in nanoseconds, the words on each peer, and how far apart the middle half of the runs is."""
    runs, context = {}, {}
    for file in sorted(folder.glob("*.json")):
        result = json.loads(file.read_text())
        context.update(result["context"])
        for row in sorted(result["benchmarks"], key=lambda row: row["family_index"]):
            if row["run_type"] == "iteration":
                runs.setdefault(row["run_name"], []).append(row["cpu_time"])
    values, spread = {}, {}
    for name, times in runs.items():
        quarters = statistics.quantiles(times, n=4)
        values[name] = statistics.median(times)
        spread[name] = (quarters[2] - quarters[0]) / values[name]
    return values, context, spread


def read_counts(folder):
    """Instructions per run of each row. callgrind wrote one numbered file per row, in their order."""
    values = {}
    for names in sorted(folder.glob("*.names")):
        dumps = callgrind.read_dumps(names.with_suffix(""))
        for name, (_, counts) in zip(names.read_text().splitlines(), dumps):
            values[name] = sum(counts.values()) / STATES
    return values


def table(values, unit):
    """Our rows against the floor and the peers, whose rows are named PEER/OPERATION."""
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
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    rows.insert(1, ["-" * widths[0]] + ["-" * (width - 1) + ":" for width in widths[1:]])
    for row in rows:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        print("| " + " | ".join(cells) + " |")


def main():
    folder = pathlib.Path(sys.argv[1])
    if any(folder.glob("*.json")):
        values, context, spread = read_times(folder)
        table(values, "ns")
        print()
        for peer in PEERS:
            print(f"{peer}: {context.get(peer, 'left out')}")
        worst = max(spread, key=spread.get)
        print(f"Spread of the middle half of the runs: {spread[worst]:.1%} at most, in {worst}"
              + ("; this machine is too busy for a fair table" if spread[worst] > 0.05 else ""))
    else:
        table(read_counts(folder), "instructions")


if __name__ == "__main__":
    main()
