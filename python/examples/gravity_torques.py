#!/usr/bin/python3
"""Draws the joint torques at rest, over the angle of one joint as curves or over two angles as maps."""

import support  # first, because it reports missing modules
from support import lumo

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.colors import CenteredNorm


def holding_torques(robot, base, base_pose):
    """The torques when one body, the base, is fixed in the world and carries the weight. A wrench on the base balances
    the weight, so no other force acts on the robot."""
    robot.computeFwdKinematicsExceptRoot()
    robot.setRootPose(base_pose @ np.linalg.inv(robot.getPoseInRoot(base)))
    robot.computeFwdKinematicsOnlyRoot()
    at_com = support.pose(np.eye(3), robot.getComPosition())
    weight = [0, 0, 9.81 * robot.getMass(), 0, 0, 0]
    robot.setExternalWrench(base, weight, np.linalg.inv(base_pose) @ at_com)
    robot.computeInverseDynamics()
    return robot.getJointAnglesTorque()


def sweep(robot, base, joints, ranges):
    """The torques over the grid of the angles; the last dimension is the joint."""
    robot.computeFwdKinematics()
    base_pose = robot.getPose(base).copy()
    torques = np.empty([len(angles) for angles in ranges] + [robot.getNbJointAngles()])
    for place in np.ndindex(torques.shape[:-1]):
        for joint, angles, i in zip(joints, ranges, place):
            robot.setJointAnglePos(joint, angles[i])
        torques[place] = holding_torques(robot, base, base_pose)
    return torques


def draw_curves(robot, joint, angles, torques, file):
    """Draws the torque of the joint, and the other torques that are not tiny."""
    figure, axes = plt.subplots(figsize=(8, 4.6), layout="constrained")
    swept, largest = robot.getJointAngleId(joint), np.abs(torques).max(axis=0)
    for k, name in enumerate(robot.joint_names):
        if k == swept or largest[k] > 0.02 * largest.max():
            axes.plot(angles, torques[:, k], color=plt.cm.tab20(k), linewidth=3 if k == swept else 1.4, label=name)
    axes.legend(loc="upper left", bbox_to_anchor=(1, 1))
    axes.set(title="Joint torques at rest (N m)", xlabel=f"{joint} (rad)")
    support.save(figure, file)


def draw_maps(robot, joints, ranges, torques, file):
    """Draws the torques of the two joints."""
    figure, maps = plt.subplots(1, 2, figsize=(11, 4.4), layout="constrained")
    for axes, joint in zip(maps, joints):
        torque = torques[..., robot.getJointAngleId(joint)].T
        bands = axes.contourf(*ranges, torque, 12, cmap="RdBu_r", norm=CenteredNorm(), alpha=0.6)
        if np.ptp(torque) > 0:
            lines = axes.contour(*ranges, torque, bands.levels, colors=support.INK, linewidths=0.6, linestyles="solid")
            axes.clabel(lines, fontsize=8)
        figure.colorbar(bands, ax=axes)
        axes.set(title=f"Torque of {joint} at rest (N m)", xlabel=f"{joints[0]} (rad)", ylabel=f"{joints[1]} (rad)")
        axes.grid(False)
    support.save(figure, file)


def main():
    parser = support.Parser(description=__doc__)
    parser.add_argument("--sweep", type=support.assignment(2), action="append", required=True, metavar="NAME=FROM,TO",
                        help="a joint and its range (rad); once for curves, twice for maps")
    support.add_options(parser, "gravity_torques.svg")
    parser.add_argument("--base", default="KneePitch", metavar="BODY",
                        help="the fixed body, which carries the weight: KneePitch (the default), Torso or another")
    options = parser.parse_args()
    joints = [name for name, _ in options.sweep]
    if len(joints) > 2 or len(set(joints)) < len(joints):
        parser.error("expected one joint or two different joints to sweep")

    robot = lumo.Plugin().create()
    support.set_pose(robot, options)
    points = 200 if len(joints) == 1 else 25
    ranges = [np.linspace(*ends, points + 1) for _, ends in options.sweep]
    torques = sweep(robot, options.base, joints, ranges)

    for joint in joints:
        k = robot.getJointAngleId(joint)
        worst = np.unravel_index(np.abs(torques[..., k]).argmax(), torques.shape[:-1])
        where = ", ".join(f"{name} = {angles[i]:.3g} rad" for name, angles, i in zip(joints, ranges, worst))
        print(f"{joint} needs at most {abs(torques[worst][k]):.3g} N m, at {where}")
    if len(joints) == 1:
        draw_curves(robot, joints[0], ranges[0], torques, options.svg)
    else:
        draw_maps(robot, joints, ranges, torques, options.svg)


if __name__ == "__main__":
    support.run(main)
