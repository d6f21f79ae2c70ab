#!/usr/bin/env python3
"""Prints what scripts/bench.sh measured: bench_table.py FOLDER COMMIT. FOLDER has the results of all rounds. If COMMIT
is empty, our times are printed beside those of the other libraries, and build/performance.svg shows the same."""

import json
import pathlib
import sys

PEERS = {"MuJoCo": "#3f6fb0", "Orocos KDL": "#7a5ba8"}  # and their colours
OURS = "#e08a3c"
WIDTH, LEFT, RIGHT, TOP = 1120, 270, 130, 80  # of the picture; of what is beside the bars and above them


def read_times(folder, program):
    """For each row of a program the shortest time (ns) of every round, and the context that the program reports."""
    rows, context = {}, {}
    for file in sorted(folder.glob(f"{program}.*.json")):
        result = json.loads(file.read_text())
        context = result["context"]
        shortest = {}
        for run in sorted(result["benchmarks"], key=lambda run: run["family_index"]):
            if run["run_type"] == "iteration":
                shortest.setdefault(run["run_name"], []).append(run["cpu_time"])
        for name, times in shortest.items():
            rows.setdefault(name, []).append(min(times))
    return rows, context


def halves(rounds):
    """The shortest times of the odd and of the even rounds. How far they are apart tells how far to trust them."""
    return min(rounds[::2]), min(rounds[1::2])


def print_table(rows):
    rows.insert(1, ["---"] + ["---:"] * (len(rows[0]) - 1))
    widths = [max(map(len, column)) for column in zip(*rows)]
    for row in rows:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        print("| " + " | ".join(cells) + " |")


def print_repeatability(differences, what):
    worst = max(differences, key=differences.get)
    print(f"\n{what} of odd and even rounds differ by {differences[worst]:.1%} at most, in {worst}"
          + ("; this machine is too busy for a fair comparison" if differences[worst] > 0.05 else ""))


def compare_with_peers(folder):
    rounds, _ = read_times(folder, "now")
    peers, context = read_times(folder, "peers")
    rounds.update(peers)
    best = {name: min(times) for name, times in rounds.items()}
    rows = [["operation", "ns", "x floor"] + [title for peer in PEERS for title in (peer, "ratio")]]
    for name in best:
        if "/" not in name:
            row = [name, f"{best[name]:.0f}", f"{best[name] / best['floor']:.2f}"]
            for peer in PEERS:
                theirs = best.get(f"{peer}/{name}")
                row += [f"{theirs:.0f}", f"{theirs / best[name]:.1f}"] if theirs else ["", ""]
            rows.append(row)
    print_table(rows)
    print_repeatability({name: max(halves(times)) / min(times) - 1 for name, times in rounds.items()}, "The times")
    for peer in PEERS:
        print(f"{peer}: {context[peer]}")
    pathlib.Path("build/performance.svg").write_text(picture(best))


def compare_with_commit(folder, commit):
    (before, _), (now, _) = read_times(folder, "before"), read_times(folder, "now")
    del now["floor"]  # which is not in the plug-in
    rows, spread = [["operation", f"ns, {commit}", "ns, now", f"now / {commit}"]], {}
    for name in now:
        ours, theirs = min(now[name]), min(before[name])
        rows.append([name, f"{theirs:.0f}", f"{ours:.0f}", f"{ours / theirs:.3f}"])
        ratios = [ours / theirs for ours, theirs in zip(halves(now[name]), halves(before[name]))]
        spread[name] = max(ratios) / min(ratios) - 1
    print_table(rows)
    print_repeatability(spread, "The ratios")


def picture(best):
    """The times as bars, in SVG, with the floor as a line."""
    scale = (WIDTH - LEFT - RIGHT) / max(best.values())
    floor = LEFT + scale * best["floor"]
    shapes, y = [], TOP
    for name in best:
        if "/" in name or name == "floor":
            continue
        shapes.append(f"<text x='{LEFT - 12}' y='{y + 12}' text-anchor='end'>{name}</text>")
        for row, colour in [(name, OURS)] + [(f"{peer}/{name}", PEERS[peer]) for peer in PEERS]:
            if row in best:
                end = LEFT + scale * best[row]
                times = f" = {best[row] / best[name]:.1f} x ours" if row != name else ""
                shapes.append(f"<rect x='{LEFT}' y='{y}' width='{end - LEFT:.1f}' height='13' fill='{colour}'/>"
                              f"<text class='note' x='{max(end, floor) + 7:.1f}' y='{y + 11}'>"
                              f"{best[row]:.0f}{times}</text>")
                y += 15
        y += 13
    for number, (name, colour) in enumerate([("this plug-in", OURS), *PEERS.items()]):
        x = LEFT + 130 * number
        shapes.append(f"<rect x='{x}' y='44' width='12' height='12' fill='{colour}'/>"
                      f"<text x='{x + 18}' y='54'>{name}</text>")
    return "\n".join([
        f"<svg xmlns='http://www.w3.org/2000/svg' width='{WIDTH}' height='{y + 15}' viewBox='0 0 {WIDTH} {y + 15}'",
        "  font-family='Helvetica, Arial, DejaVu Sans, sans-serif'>",
        "<style>text {font-size: 12.5px; fill: #2b303b} .title {font-size: 20px; font-weight: bold}",
        ".note {font-size: 12px; fill: #6b7482}</style>",
        "<rect width='100%' height='100%' fill='white'/>",
        "<text class='title' x='24' y='32'>Time of one call</text>",
        "<text class='note' x='24' y='54'>nanoseconds; shorter is better</text>",
        *shapes,
        f"<path d='M{floor:.1f} {TOP - 10}V{y + 5}' stroke='black' stroke-width='1.5'/>",
        f"<text class='note' x='{floor + 7:.1f}' y='{y + 4}'>{best['floor']:.0f}, the floor: "
        "the sines and cosines of one state</text>",
        "</svg>", ""])


if __name__ == "__main__":
    if sys.argv[2]:
        compare_with_commit(pathlib.Path(sys.argv[1]), sys.argv[2])
    else:
        compare_with_peers(pathlib.Path(sys.argv[1]))
