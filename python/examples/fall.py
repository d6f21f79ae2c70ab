#!/usr/bin/python3
"""Simulates the robot in the air with its motors off, and draws its motion, its energy and its joint angles.

The equation of motion is H a + b = tau, where H is the mass matrix, b the forces at zero acceleration, and tau the
friction of the joints. The program integrates in double precision; the plug-in computes in single precision.
"""

import sys
from collections import namedtuple
from time import monotonic

import support  # first, because it reports missing modules
from support import lumo

import matplotlib.pyplot as plt
import numpy as np

G = np.array([0, 0, -np.float32(9.81)], dtype=float)  # the plug-in's gravity
LIMBS = {"#12907c": range(2, 7), "#d9772b": range(10, 15), "#7a5ba8": range(2), "#3f6fb0": range(7, 10)}  # of joints
FASTEST = 1e5  # the limit of the velocities (rad/s) and of the friction (1/s)

# One instant or a sequence of instants. R and p are the root's rotation and position, q the joint angles. v is the
# root's velocity in its own axes, then the rates of the joints. Centre of mass, linear momentum and angular momentum
# about the centre of mass are in the world frame.
Motion = namedtuple("Motion", "time R p q v kinetic potential com linear angular")

# The motion without options: a throw in a pose with bent arms.
THROW = ["--root=0,0,2,0,0,0", "--push=Torso=12,0,0", "--push=HipPitch=45,0,80", "--joint=HipPitch=0.6",
         "--joint=KneePitch=0.1", "--joint=LShoulderRoll=-0.5", "--joint=LElbowYaw=0.2", "--joint=LElbowRoll=-0.6",
         "--joint=LWristYaw=-0.7", "--joint=RShoulderPitch=-0.7", "--joint=RShoulderRoll=0.2", "--joint=RElbowYaw=1",
         "--joint=RElbowRoll=0.8", "--joint=RWristYaw=0.9"]


class FreeRobot:
    """Forward dynamics. The plug-in always computes with the root at the origin, because only the potential energy
    depends on p. This keeps the rounding errors small far from the origin."""

    def __init__(self, robot, friction):
        self.robot, self.friction = robot, friction
        # These views show later results.
        self.H, self.torques = robot.getGeneralizedMass(), robot.getJointAnglesTorque()
        self.com_in_root = robot.getComPositionInRoot()
        robot.setJointAnglesAcc(np.zeros(15))

    def momentum(self, q, v):
        """Linear momentum, then angular momentum about the root's origin, in the root's axes."""
        self.robot.setJointAnglesPos(q)
        self.robot.computeFwdKinematicsExceptRoot()
        self.robot.computeGeneralizedMass()
        return self.H[:6] @ v

    def momentum_rate(self, q, v):
        """The derivative of the momentum for constant v, as a difference of fourth order in which no joint turns by
        more than 0.2 rad."""
        dt = 0.05 / max(1e-3, np.abs(v[6:]).max())
        h = {k: self.momentum(q + k * dt * v[6:], v) for k in (-2, -1, 1, 2)}
        return (8 * (h[1] - h[-1]) - (h[2] - h[-2])) / (12 * dt)

    def acceleration(self, R, q, v):
        """The derivative of v. It is solved for in the frame that falls freely with the root's origin. In this frame,
        the origin is at rest and nothing has weight, so no large terms cancel. The interface returns only the rows of b
        for the joints. The six rows for the root are the derivative of the robot's momentum at zero acceleration."""
        in_frame, w = np.hstack([np.zeros(3), v[3:]]), v[3:6]
        rate = self.momentum_rate(q, in_frame)
        linear, angular = np.split(self.momentum(q, in_frame), 2)
        self.robot.setRootPose(support.pose(R, np.zeros(3)))
        self.robot.setRootVelocity(in_frame[:6])
        self.robot.setRootAcceleration(np.hstack([R.T @ G, np.zeros(3)]))
        self.robot.setJointAnglesVel(v[6:])
        self.robot.computeInverseDynamics()
        b = np.hstack([rate + np.hstack([np.cross(w, linear), np.cross(w, angular)]), self.torques])
        # The friction of a joint is proportional to the inertia that the joint feels when all other joints are free.
        H = self.H.astype(float)
        tau = -self.friction * v / np.diag(np.linalg.inv(H))
        tau[:6] = 0
        a = np.linalg.solve(H, tau - b)
        a[:3] += R.T @ G - np.cross(w, v[:3])
        return a

    def measure(self, time, R, p, q, v):
        linear, angular = np.split(self.momentum(q, v), 2)
        com = p + R @ self.com_in_root
        return Motion(time, R, p, q, v, 0.5 * v @ self.H @ v, -self.robot.getMass() * G @ com, com, R @ linear,
                      R @ (angular - np.cross(self.com_in_root, linear)))


def step(robot, R0, p, q, v, dt):
    """One classical Runge-Kutta step. In the step, the root's rotation is R0 times the rotation by a vector."""

    def slope(y):
        turned, _, q, v = np.split(y, [3, 6, 21])
        R, w = R0 @ support.rotation(turned), v[3:6]
        turn = w + np.cross(turned, w) / 2 + np.cross(turned, np.cross(turned, w)) / 12
        return np.hstack([turn, R @ v[:3], v[6:], robot.acceleration(R, q, v)])

    y = np.hstack([np.zeros(3), p, q, v])
    k1 = slope(y)
    k2 = slope(y + dt / 2 * k1)
    k3 = slope(y + dt / 2 * k2)
    k4 = slope(y + dt * k3)
    turned, p, q, v = np.split(y + dt / 6 * (k1 + 2 * k2 + 2 * k3 + k4), [3, 6, 21])
    return R0 @ support.rotation(turned), p, q, v


def simulate(robot, root, v, seconds, dt, friction=0.0, progress=lambda step, measure: None):
    """The motion that starts with the joint angles that are set, this pose of the root and the velocity v. A step is
    split so that nothing turns by more than some 0.02 rad: the hands spin fast, because their inertia is tiny. After
    each part, `progress` gets the number of steps and a function that measures the state."""
    free = FreeRobot(robot, friction)
    state = root[:3, :3], root[:3, 3], robot.getJointAnglesPos().astype(float), v
    motion = [free.measure(0.0, *state)]
    for i in range(1, round(seconds / dt) + 1):
        left = dt
        while left > 0:
            fastest = max(np.abs(state[3][3:]).max(), friction)
            if not fastest <= FASTEST:
                raise RuntimeError(f"at {i * dt:.3g} s the motion is too fast: use a gentler --push")
            part = left / np.ceil(max(1, left * fastest / 0.02))
            state = step(free, *state, part)
            left -= part
            progress(i - left / dt, lambda: free.measure(i * dt - left, *state))
        motion.append(free.measure(i * dt, *state))
    return Motion(*map(np.array, zip(*motion)))


def push(robot, pushes):
    """The velocity after impulses (N s, world axes) at centres of mass of bodies, while the motors hold the joints."""
    robot.computeFwdKinematics()
    robot.computeGeneralizedMass()
    H, R = robot.getGeneralizedMass(), robot.getRootPose()[:3, :3]
    v = np.zeros(21)
    for body, impulse in pushes:
        J = (R @ H[:3] - robot.computePartialComJacobian(body)) / robot.getMass(body)  # of the body's centre of mass
        v[:6] += np.linalg.solve(H[:6, :6], J[:, :6].T @ impulse)
    return v


def draw_robot(axes, robot, R, p, q, label, strength):
    """Draws the robot as seen from its right: each limb as a line from the root to the last centre of mass."""
    robot.setRootPose(support.pose(R, p))
    robot.setJointAnglesPos(q)
    robot.computeFwdKinematics()
    origins = np.array([robot.getPose(b)[[0, 2], 3] for b in range(robot.getNbBodies())])
    for colour, limb in LIMBS.items():
        points = np.vstack([origins[0], origins[1:][limb], robot.getComPosition(limb[-1] + 1)[[0, 2]]])
        axes.plot(*points.T, color=colour, alpha=strength, linewidth=2)
    axes.text(*origins[0] - [0.15, 0], label, ha="right", va="top", color=support.FAINT)


def draw(robot, motion, file):
    time, total = motion.time, motion.kinetic + motion.potential
    figure = plt.figure(figsize=(11, 7))
    left, right = figure.add_gridspec(1, 2, width_ratios=[1, 1.25], left=0.06, right=0.97, bottom=0.07, top=0.95,
                                      wspace=0.13)
    upper, lower = right.subgridspec(2, 1, height_ratios=[1, 1.5], hspace=0.35)
    path, energy = figure.add_subplot(left), figure.add_subplot(upper)

    path.plot(motion.com[:, 0], motion.com[:, 2], color=support.ACCENT, linewidth=1, linestyle=(0, (5, 4)))
    for i in np.linspace(0, len(time) - 1, 5).astype(int):
        path.plot(motion.com[i, 0], motion.com[i, 2], ".", color=support.ACCENT, zorder=4)
        strength = 0.4 + 0.6 * i / (len(time) - 1)
        draw_robot(path, robot, motion.R[i], motion.p[i], motion.q[i], f"{time[i]:.3g} s", strength)
    path.set(title="Seen from the right; red: the centre of mass", xlabel="x (m)", ylabel="z (m)", aspect="equal",
             adjustable="datalim")

    energy.plot(time, motion.kinetic, color="#d9772b", label="kinetic")
    energy.plot(time, motion.potential, color="#3f6fb0", label="potential")
    energy.plot(time, total, color=support.INK, label="total")
    energy.legend(ncols=3, loc="lower right", bbox_to_anchor=(1, 1), borderaxespad=0)
    energy.set(title="Energy (J)", xlabel="time (s)")

    panels = lower.subgridspec(3, 5, hspace=0.5, wspace=0.12).subplots(sharex=True, sharey=True)
    joints = [(k, colour) for colour, limb in LIMBS.items() for k in limb]
    for axes, (k, colour) in zip(panels.flat, joints):
        axes.plot(time, motion.q[:, k], color=colour)
        axes.set_title(robot.getJointAngleName(k), color=colour, fontsize=7.5)
    panels[0, 0].annotate("Joint angles (rad)", (0, 1), (0, 22), "axes fraction", "offset points", fontsize=10)
    panels[2, 2].set_xlabel("time (s)")
    support.save(figure, file)


def main():
    parser = support.Parser(description=__doc__.splitlines()[0],
                            epilog="Without --root, --joint and --push, the robot is thrown forwards with bent arms.")
    support.add_options(parser, "fall.svg")
    parser.add_argument("--push", type=support.assignment(3), action="append", default=[], metavar="BODY=X,Y,Z",
                        help="an impulse (N s, world axes) at the centre of mass of a body; may be repeated")
    parser.add_argument("--friction", type=support.number(0, FASTEST), default=0.0, metavar="RATE",
                        help="the rate (1/s) at which friction slows down a joint; at most 1e5, none by default")
    parser.add_argument("--seconds", type=support.number(1e-9), default=1.0, metavar="SECONDS",
                        help="duration; the default is 1")
    parser.add_argument("--step", type=support.number(1e-9), default=1e-3, metavar="SECONDS",
                        help="of the integration; the default is 0.001")
    options = parser.parse_args()
    if options.root is None and not options.joint and not options.push:
        options = parser.parse_args([*THROW, *sys.argv[1:]])
    if not 1 <= round(options.seconds / options.step) <= 1e6:
        parser.error("--seconds divided by --step must be 1 to 1000000 steps")

    robot = lumo.Plugin().create()
    root = support.set_pose(robot, options)
    v = push(robot, options.push)
    every, printed = -(-round(options.seconds / options.step) // 10), monotonic()
    print("time (s)  kinetic (J)  potential (J)    total (J)")

    def progress(step, measure):
        nonlocal printed
        if step % every == 0 or monotonic() > printed + 0.9:
            now, printed = measure(), monotonic()
            total = now.kinetic + now.potential
            print(f"{now.time:8.4g}{now.kinetic:13.3f}{now.potential:15.3f}{total:13.4f}", flush=True)

    motion = simulate(robot, root, v, options.seconds, options.step, options.friction, progress)
    by_gravity = robot.getMass() * np.outer(motion.time, G)
    change, exchanged = np.ptp(motion.kinetic + motion.potential), np.ptp(motion.potential)
    print(f"energy exchanged: {exchanged:.1f} J\n"
          f"change of total energy: {change:.1e} J\n"
          "change of linear momentum after subtracting the effect of gravity: "
          f"{np.ptp(motion.linear - by_gravity, axis=0).max():.1e} N s\n"
          "change of angular momentum about the centre of mass: "
          f"{np.ptp(motion.angular, axis=0).max():.1e} N m s")
    # The floor is four float epsilons of the largest kinetic energy and of the potential energy one metre up.
    rounding = 2**-21 * (motion.kinetic.max() + robot.getMass() * 9.81)
    if options.friction == 0 and not change <= 1e-5 * exchanged + rounding:
        print("The total energy changes by more than 1e-5 of the energy exchanged, which rounding does not explain.")
    draw(robot, motion, options.svg)


if __name__ == "__main__":
    support.run(main)
