"""Prints what lumo-digest prints, from the module: a hash of every kind of result over a number of states."""

import math
import sys

import numpy as np

import lumo


class Hash:
    """FNV-1a over the bits of floats."""

    def __init__(self):
        self.value = 0xCBF29CE484222325

    def add(self, values):
        for byte in np.asarray(values, np.float32).tobytes(order="F"):
            self.value = (self.value ^ byte) * 0x100000001B3 & 0xFFFFFFFFFFFFFFFF


class Draw:
    """Floats in [-size, size) by splitmix64."""

    def __init__(self, seed):
        self.bits = seed

    def __call__(self, size):
        self.bits = self.bits + 0x9E3779B97F4A7C15 & 0xFFFFFFFFFFFFFFFF
        z = self.bits
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9 & 0xFFFFFFFFFFFFFFFF
        z = (z ^ z >> 27) * 0x94D049BB133111EB & 0xFFFFFFFFFFFFFFFF
        z ^= z >> 31
        return (np.float32(z >> 40) * np.float32(2**-23) - np.float32(1)) * np.float32(size)


def pose(position):
    """The pose of x, y, z and the angles about x, y, z of R = Rz Ry Rx."""
    x, y, z, ax, ay, az = map(float, position)
    (sx, cx), (sy, cy), (sz, cz) = [(math.sin(a), math.cos(a)) for a in (ax, ay, az)]
    return [[cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx, x],
            [sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx, y],
            [-sy, cy * sx, cy * cx, z],
            [0, 0, 0, 1]]


def set_state(robot, seed, wrenches):
    draw = Draw(seed)
    q, dq, ddq = [np.array([draw(size) for _ in range(21)]) for size in (3, 3, 10)]
    q[4] *= np.float32(0.5)
    robot.setRootPose(pose(q[:6]))
    robot.setRootVelocity(dq[:6])
    robot.setRootAcceleration(ddq[:6])
    robot.setJointAnglesPos(q[6:])
    robot.setJointAnglesVel(dq[6:])
    robot.setJointAnglesAcc(ddq[6:])
    for b in range(16 if wrenches else 0):
        robot.setExternalWrench(b, [draw(10) for _ in range(6)])
    return ddq


def digest(robot, states):
    names = ["root pose", "poses", "poses in root", "centres of mass", "bodies' centres of mass", "Jacobian",
             "mass matrix", "partial centres of mass", "partial com Jacobians", "torques", "with other inertias"]
    hashes = {name: Hash() for name in names}
    for seed in range(states):
        set_state(robot, seed, wrenches=True)
        hashes["root pose"].add(robot.getRootPose()[:3].T)  # a pose is hashed row by row
        robot.computeFwdKinematics()
        hashes["centres of mass"].add(robot.getComPosition())
        hashes["centres of mass"].add(robot.getComPositionInRoot())
        hashes["Jacobian"].add(robot.getJacobianInRoot())
        robot.computeGeneralizedMass()
        hashes["mass matrix"].add(robot.getGeneralizedMass())
        for b in range(robot.getNbBodies()):
            hashes["poses"].add(robot.getPose(b)[:3].T)
            hashes["poses in root"].add(robot.getPoseInRoot(b)[:3].T)
            hashes["bodies' centres of mass"].add(robot.getComPosition(b))
            hashes["partial centres of mass"].add(robot.computePartialComPositionInRoot(b))
            hashes["partial com Jacobians"].add(robot.computePartialComJacobian(b))
        robot.computeInverseDynamics()
        hashes["torques"].add(robot.getJointAnglesTorque())
    others = hashes["with other inertias"]
    for seed in range(states // 10):
        x = set_state(robot, seed, wrenches=False)
        inertia = x[4:13].reshape(3, 3).T * np.float32(0.0001)
        mass = np.float32(1) + np.float32(0.05) * x[0]
        robot.setBodyInertia(seed % 16, mass, np.float32(0.01) * x[1:4], inertia)
        robot.computeFwdKinematics()
        robot.computeGeneralizedMass()
        robot.computeInverseDynamics()
        for values in (robot.getComPositionInRoot(), robot.getGeneralizedMass(), robot.getJointAnglesTorque(),
                       [robot.getMass(), robot.getPartialMass(1)]):
            others.add(values)
    return "".join(f"{name:24} {hash.value:016x}\n" for name, hash in hashes.items())


if __name__ == "__main__":
    print(digest(lumo.Plugin().create(), int(sys.argv[1])), end="")
