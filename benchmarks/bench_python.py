"""Prints the time of inverse dynamics in one of 100,000 states: a loop in C++, evaluate() of the Python module, and a
loop in Python. Each is the shortest of many runs, one after another."""

import pathlib
import subprocess
import timeit

import lumo
import numpy as np

COUNT = 100_000
robot = lumo.Plugin().create()
arrays = np.random.default_rng(0).uniform(-1, 1, (3, COUNT, 15)).astype(np.float32)
inputs = dict(zip(["setJointAnglesPos", "setJointAnglesVel", "setJointAnglesAcc"], arrays))


def loop():
    for q, dq, ddq in zip(*arrays):
        robot.setJointAnglesPos(q)
        robot.setJointAnglesVel(dq)
        robot.setJointAnglesAcc(ddq)
        robot.computeInverseDynamics()
        robot.getJointAnglesTorque().copy()


program = pathlib.Path(lumo.__file__).parents[2] / "bin/bench_states"
works = {f"evaluate, {n} threads": lambda n=n: robot.evaluate(inputs, ["getJointAnglesTorque"], n) for n in (1, 2)}
works["loop in Python"] = loop
times = {name: [] for name in ("loop in C++", *works)}
for _ in range(10):
    times["loop in C++"].append(float(subprocess.check_output([program])))
    for name, work in works.items():
        times[name].append(min(timeit.repeat(work, number=1)) / COUNT * 1e9)
for name, all_times in times.items():
    ratio = min(times["loop in C++"]) / min(all_times)
    print(f"{name:20}{min(all_times):7.0f} ns a state{ratio:7.2f} of the rate of C++")
