#!/usr/bin/python3
"""Computes the joint torques of many random states with Dask, on this machine or on those of a scheduler."""

import hashlib
import os
import signal
import sys
import time

import support  # first, because it reports missing modules
from support import lumo

import numpy as np

CHUNK = 5000  # states; the results depend on it, but not on the workers


def torques(chunk, count):
    """Runs in a worker, which needs only NumPy and lumo. Returns a hash of the torques, instead of sending them all."""
    q, dq, ddq = np.random.default_rng(chunk).random((3, count, 15), np.float32) * 2 - 1
    robot = lumo.Plugin().create()
    results = robot.evaluate({"setJointAnglesPos": q, "setJointAnglesVel": 2 * dq, "setJointAnglesAcc": 5 * ddq},
                             ["getJointAnglesTorque"], threads=1)["getJointAnglesTorque"]
    return hashlib.sha256(results.tobytes()).hexdigest()


def interrupted(*_):
    """Reports Ctrl-C with one line. Nothing else is reported while Dask closes its connections."""
    print("\nmany_states.py: interrupted", file=sys.stderr)
    os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stderr.fileno())
    raise KeyboardInterrupt


def main():
    import distributed  # here, because support.run reports that it is missing

    parser = support.Parser(description=__doc__)
    parser.add_argument("--states", type=support.number(1, 1e9), default=1e6, metavar="N",
                        help="the number of states; the default is a million")
    place = parser.add_mutually_exclusive_group()
    place.add_argument("--workers", type=support.number(1, 1000), metavar="N",
                       help="the number of processes on this machine; the default is one for each core")
    place.add_argument("--scheduler", metavar="ADDRESS",
                       help="the scheduler of a Dask cluster, whose workers have NumPy and lumo: for example host:8786")
    options = parser.parse_args()

    states, workers = int(options.states), options.workers and int(options.workers)
    starts = range(0, states, CHUNK)
    cluster = {"address": options.scheduler, "timeout": 10}
    if not options.scheduler:
        cluster = {"n_workers": workers, "threads_per_worker": 1, "dashboard_address": None}
        signal.signal(signal.SIGINT, signal.SIG_IGN)  # also for the workers that start now
    with distributed.Client(**cluster) as client:
        signal.signal(signal.SIGINT, interrupted)
        client.wait_for_workers(1, timeout=60)
        begin = time.monotonic()
        futures = client.map(torques, range(len(starts)), [min(CHUNK, states - start) for start in starts])
        distributed.progress(futures, notebook=False)
        hashes = client.gather(futures)
        seconds = time.monotonic() - begin

    print(f"\n{states} states in {seconds:.1f} s: {states / seconds:.0f} states/s")
    print(f"hash of all torques: {hashlib.sha256(''.join(hashes).encode()).hexdigest()[:16]}")


if __name__ == "__main__":
    support.run(main)
