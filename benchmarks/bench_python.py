"""Prints the time of inverse dynamics in one of 100,000 states: a loop in C++, evaluate() of the Python module, and a
loop in Python. Each is the shortest of many runs, one after another."""

import pathlib
import subprocess
import time

import lumo
import numpy as np

COUNT = 100_000
robot = lumo.Plugin().create()
q, dq, ddq = np.random.default_rng(0).uniform(-1, 1, (3, COUNT, 15)).astype(np.float32)
inputs = {"setJointAnglesPos": q, "setJointAnglesVel": dq, "setJointAnglesAcc": ddq}


def evaluate(threads):
    return lambda: robot.evaluate(inputs, ["getJointAnglesTorque"], threads)


def loop():
    torques = np.empty((COUNT, 15), np.float32)
    for i in range(COUNT):
        robot.setJointAnglesPos(q[i])
        robot.setJointAnglesVel(dq[i])
        robot.setJointAnglesAcc(ddq[i])
        robot.computeInverseDynamics()
        torques[i] = robot.getJointAnglesTorque()


def nanoseconds(work):
    times = []
    for _ in range(5):
        start = time.perf_counter()
        work()
        times.append((time.perf_counter() - start) / COUNT * 1e9)
    return min(times)


program = pathlib.Path(lumo.__file__).parents[2] / "bin/bench_states"
timed = {"loop in C++": lambda: float(subprocess.run([program], capture_output=True, text=True, check=True).stdout)}
for name, work in (("evaluate, 1 thread", evaluate(1)), ("evaluate, 2 threads", evaluate(2)), ("loop in Python", loop)):
    timed[name] = lambda work=work: nanoseconds(work)
rounds = [[measure() for measure in timed.values()] for _ in range(10)]
times = dict(zip(timed, map(min, zip(*rounds))))
for name, shortest in times.items():
    print(f"{name:20}{shortest:7.0f} ns a state{times['loop in C++'] / shortest:7.2f} of the rate of C++")
