"""The examples: the laws of motion that the fall must obey, what the torques of gravity must be, and bad input."""

import pathlib
import shutil
import subprocess
import sys

import numpy as np
import pytest

import lumo

EXAMPLES = pathlib.Path(__file__).parent.parent / "examples"
sys.path.insert(0, str(EXAMPLES))

import fall  # noqa: E402
import gravity_torques  # noqa: E402
import support  # noqa: E402


def make_robot():
    """All joints bent; and a pose for its root."""
    robot = lumo.Plugin().create()
    robot.setJointAnglesPos(np.linspace(1, -1, 15))
    root = support.pose(support.rotation([0.3, -0.5, 0.8]), [1, 2, 3])
    robot.setRootPose(root)
    return robot, root


def throw(friction=0.0):
    """A tenth of a second in which everything moves, the hands by some 30 rad/s."""
    robot, root = make_robot()
    v = fall.push(robot, [("Torso", [6, -3, 0])])
    v[6:] = np.linspace(2, -2, 15)
    return robot, fall.simulate(robot, root, v, seconds=0.1, dt=1e-3, friction=friction)


def test_free_motion_conserves_energy_and_momentum():
    robot, motion = throw()
    mass = robot.getMass()
    by_gravity = mass * np.outer(motion.time, fall.G)
    parabola = np.outer(motion.time, motion.linear[0] / mass) + np.outer(motion.time**2 / 2, fall.G)
    # About four times what was measured: 2.7e-5 J of 11 J exchanged, 2.3e-6 N s, 2.6e-6 N m s, 1.2e-7 m.
    assert np.ptp(motion.kinetic + motion.potential) < 1e-5 * np.ptp(motion.potential)
    assert np.ptp(motion.linear - by_gravity, axis=0).max() < 1e-5
    assert np.ptp(motion.angular, axis=0).max() < 1e-5
    assert np.abs(motion.com - motion.com[0] - parabola).max() < 5e-7


def test_rotation_is_integrated_to_fourth_order():
    class Spinning:
        def acceleration(self, R, q, v):
            return np.hstack([np.zeros(3), np.cross([3, 1, -2], v[3:6]), np.zeros(15)])

    def turn(steps):
        state = np.eye(3), np.zeros(3), np.zeros(15), np.hstack([np.zeros(3), [2, -1, 1], np.zeros(15)])
        for _ in range(steps):
            state = fall.step(Spinning(), *state, 0.5 / steps)
        return state[0]

    exact, coarse, fine = turn(300), turn(5), turn(10)
    np.testing.assert_allclose(exact @ exact.T, np.eye(3), atol=1e-12)
    assert np.abs(coarse - exact).max() > 12 * np.abs(fine - exact).max()


def test_a_push_is_what_it_adds_to_the_momentum():
    robot, motion = throw()
    robot, root = make_robot()
    impulse = np.array([6, -3, 0])
    v = fall.push(robot, [("Torso", impulse)])
    pushed = fall.FreeRobot(robot, 0).measure(0, root[:3, :3], root[:3, 3], robot.getJointAnglesPos(), v)
    lever = robot.getComPosition("Torso") - robot.getComPosition()
    np.testing.assert_allclose(pushed.linear, impulse, atol=1e-5)
    np.testing.assert_allclose(pushed.angular, np.cross(lever, impulse), atol=1e-5)


def test_friction_takes_energy_but_no_momentum():
    _, free = throw()
    robot, motion = throw(friction=5)
    total = motion.kinetic + motion.potential
    assert np.diff(total).max() < 0
    assert total[0] - total[-1] > 0.01
    assert np.abs(motion.linear - free.linear).max() < 1e-4


@pytest.mark.parametrize("base", ["KneePitch", "Torso"])
def test_torques_of_gravity_are_the_slopes_of_the_potential_energy(base):
    robot, _ = make_robot()
    robot.computeFwdKinematics()
    base_pose = robot.getPose(base).copy()
    at_zero = {"robot": robot, "base": base, "base_pose": base_pose}
    torques = gravity_torques.holding_torques(**at_zero).copy()

    def height(joint, change):
        robot.setJointAnglePos(joint, q[joint] + change)
        gravity_torques.holding_torques(**at_zero)
        robot.setJointAnglePos(joint, q[joint])
        return robot.getComPosition()[2]

    q = robot.getJointAnglesPos().astype(float)
    for joint in range(15):
        slope = (8 * (height(joint, 0.1) - height(joint, -0.1)) - (height(joint, 0.2) - height(joint, -0.2))) / 1.2
        assert torques[joint] == pytest.approx(9.81 * robot.getMass() * slope, abs=2e-3), robot.getJointAngleName(joint)


@pytest.mark.parametrize("example, arguments", [
    (fall, "--joint Knee=1"), (fall, "--joint KneePitch"), (fall, "--joint KneePitch=nan"), (fall, "--push Torso=1,2"),
    (fall, "--root 1,2"), (fall, "--step 0"), (fall, "--friction -1"), (fall, "--seconds .002 --svg /none/fall.svg"),
    (fall, "--push LWristYaw=900,0,0"),
    (gravity_torques, ""), (gravity_torques, "--sweep HipPitch=0,x"),
    (gravity_torques, "--sweep HipPitch=0,1 --base Nose"), (gravity_torques, 3 * "--sweep HipPitch=0,1 "),
])
def test_bad_input_is_answered_by_one_line(example, arguments, monkeypatch, capsys):
    monkeypatch.setattr(sys, "argv", [example.__file__, *arguments.split()])
    with pytest.raises(SystemExit) as end:
        support.run(example.main)
    errors = capsys.readouterr().err + (end.value.code if isinstance(end.value.code, str) else "")
    assert end.value.code != 0
    assert len(errors.splitlines()) == 1
    assert errors.startswith(pathlib.Path(example.__file__).name + ": ")


def test_without_the_module_one_line_says_where_it_was_looked_for(tmp_path):
    shutil.copytree(EXAMPLES, tmp_path / "python/examples")
    command = [sys.executable, tmp_path / "python/examples/fall.py"]
    result = subprocess.run(command, env={}, capture_output=True, text=True)
    assert result.returncode != 0
    assert result.stderr == f"the Python module lumo is missing; lumo can be in {tmp_path}/build/release/python\n"


def test_the_same_picture_is_the_same_file(tmp_path, monkeypatch):
    pictures = []
    for file in (tmp_path / "a.svg", tmp_path / "b.svg"):
        monkeypatch.setattr(sys, "argv", ["fall.py", "--seconds", "0.02", "--svg", str(file)])
        fall.main()
        pictures.append(file.read_text())
    assert pictures[0] == pictures[1]
    assert all(name in pictures[0] for name in ("kinetic", "KneePitch"))
