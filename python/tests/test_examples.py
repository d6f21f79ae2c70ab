"""The examples: the laws of motion that the fall must obey, what the torques of gravity must be, and bad input."""

import hashlib
import itertools
import os
import pathlib
import re
import signal
import sys
import types

import numpy as np
import pytest

import lumo

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "examples"))

import fall  # noqa: E402
import gravity_torques  # noqa: E402
import many_states  # noqa: E402
import support  # noqa: E402


@pytest.fixture
def run(monkeypatch, capsys):
    """Runs an example with options, and returns what it prints."""
    def run(example, options):
        monkeypatch.setattr(sys, "argv", [example.__file__, *options.split()])
        support.run(example.main)
        return capsys.readouterr().out
    return run


def make_robot():
    """All joints bent; and a pose for its root."""
    robot = lumo.Plugin().create()
    robot.setJointAnglesPos(np.linspace(1, -1, 15))
    root = support.pose(support.rotation([0.3, -0.5, 0.8]), [1, 2, 3])
    robot.setRootPose(root)
    return robot, root


def throw(friction=0.0, spin=0.0):
    """A tenth of a second in which everything moves, a hand by some 30 rad/s plus the spin."""
    robot, root = make_robot()
    v = fall.push(robot, [("Torso", [6, -3, 0])])
    v[6:] = np.linspace(2, -2, 15)
    v[-1] += spin
    robot.setRootAcceleration(np.ones(6))  # the fall must not depend on them
    robot.setJointAnglesAcc(np.ones(15))
    return robot, fall.simulate(robot, root, v, seconds=0.1, dt=1e-3, friction=friction)


@pytest.mark.parametrize("spin", [0, 300])
def test_free_motion_conserves_energy_and_momentum_and_agrees_with_inverse_dynamics(spin, monkeypatch):
    torques = []

    def checked(free, R, q, v, solve=fall.FreeRobot.acceleration):
        a = solve(free, R, q, v)
        free.robot.setRootVelocity(v[:6])
        free.robot.setRootAcceleration(a[:6])
        free.robot.setJointAnglesAcc(a[6:])
        free.robot.computeInverseDynamics()
        torques.append(free.torques.copy())
        free.robot.setJointAnglesAcc(np.zeros(15))
        return a

    monkeypatch.setattr(fall.FreeRobot, "acceleration", checked)
    robot, motion = throw(spin=spin)
    mass = robot.getMass()
    by_gravity = mass * np.outer(motion.time, fall.G)
    parabola = np.outer(motion.time, motion.linear[0] / mass) + np.outer(motion.time**2 / 2, fall.G)
    # At least twice what was measured: 4.8e-5 J of 11 J exchanged, 3.7e-6 N s, 5.5e-6 N m s, 1.1e-7 m, 1.3e-5 N m.
    assert np.ptp(motion.kinetic + motion.potential) < 1e-5 * np.ptp(motion.potential)
    assert np.ptp(motion.linear - by_gravity, axis=0).max() < 2e-5
    assert np.ptp(motion.angular, axis=0).max() < 2e-5
    assert np.abs(motion.com - motion.com[0] - parabola).max() < 5e-7
    assert np.abs(torques).max() < 5e-5


def test_each_push_adds_its_impulse_to_the_momentum():
    robot, root = make_robot()
    pushes = [("Torso", np.array([6, -3, 0])), ("HeadYaw", np.array([1, 2, 0.5]))]
    v = fall.push(robot, pushes)
    pushed = fall.FreeRobot(robot, 0).measure(0, root[:3, :3], root[:3, 3], robot.getJointAnglesPos(), v)
    turn = sum(np.cross(robot.getComPosition(body) - robot.getComPosition(), impulse) for body, impulse in pushes)
    np.testing.assert_allclose(pushed.linear, [7, -1, 0.5], atol=1e-4)
    np.testing.assert_allclose(pushed.angular, turn, atol=1e-4)


def test_friction_takes_energy_but_no_momentum_and_slows_a_joint_at_its_rate():
    _, free = throw()
    robot, motion = throw(friction=5)
    total = motion.kinetic + motion.potential
    assert np.diff(total).max() < 0
    assert total[0] - total[-1] > 0.01
    assert np.abs(motion.linear - free.linear).max() < 1e-4
    for k in (8, 20):  # one joint moves
        state = np.eye(3), np.full(15, 0.3), 2 * np.eye(21)[k]
        slowed, free = [fall.FreeRobot(robot, friction).acceleration(*state) for friction in (5, 0)]
        assert (slowed - free)[k] == pytest.approx(-5 * 2)


@pytest.mark.parametrize("base", ["KneePitch", "Torso"])
def test_torques_of_gravity_are_the_slopes_of_the_potential_energy(base):
    robot, _ = make_robot()
    robot.computeFwdKinematics()
    base_pose = robot.getPose(base).copy()
    torques = gravity_torques.holding_torques(robot, base, base_pose).copy()
    q = robot.getJointAnglesPos().astype(float)

    def height(joint, change):
        robot.setJointAnglePos(joint, q[joint] + change)
        gravity_torques.holding_torques(robot, base, base_pose)
        robot.setJointAnglePos(joint, q[joint])
        return robot.getComPosition()[2]

    for joint, name in enumerate(robot.joint_names):
        slope = (8 * (height(joint, 0.1) - height(joint, -0.1)) - (height(joint, 0.2) - height(joint, -0.2))) / 1.2
        assert torques[joint] == pytest.approx(9.81 * robot.getMass() * slope, abs=2e-3), name


@pytest.mark.parametrize("example, options", [
    (fall, "--joint Knee=1"), (fall, "--joint KneePitch=nan"), (fall, "--push Torso=1,2"), (fall, "--step 0"),
    (fall, "--svg fall.png"), (fall, "--svg /none/fall.svg"), (fall, "--push LWristYaw=1e5,0,0"), (fall, "--step 3"),
    (fall, "--friction 1.1e5"), (gravity_torques, ""), (gravity_torques, 3 * "--sweep HipPitch=0,1 "),
    (gravity_torques, "--sweep HipPitch=0,1 --base Nose"), (many_states, "--states 0"),
    (many_states, "--scheduler nowhere"),
])
def test_bad_input_is_answered_by_one_line(example, options, run, capsys):
    with pytest.raises(SystemExit) as end:
        run(example, options)
    printed = capsys.readouterr()
    errors = printed.err + (end.value.code if isinstance(end.value.code, str) else "")
    assert end.value.code != 0
    assert len(errors.splitlines()) == 1
    assert "--svg" not in options or not printed.out  # refused before the simulation


def test_ctrl_c_is_answered_by_one_line(run, monkeypatch):
    monkeypatch.setattr(fall, "simulate", lambda *_: signal.raise_signal(signal.SIGINT))
    with pytest.raises(SystemExit, match="^fall.py: interrupted$"):
        run(fall, "")


def test_the_same_motion_gives_the_same_file_which_shows_energies_and_angles(run, tmp_path):
    file = tmp_path / "a.svg"
    printed = run(fall, f"--seconds=0.02 --svg={file}")
    thrown = file.read_text()
    run(fall, f"--seconds=0.02 --svg={file}")
    assert file.read_text() == thrown
    _, energy, *angles = fall.plt.gcf().axes
    kinetic, potential, total = [line.get_ydata() for line in energy.lines]
    assert kinetic[0] > 100  # the throw is the default
    np.testing.assert_allclose(total, kinetic + potential)
    np.testing.assert_allclose(np.diff(potential), -np.diff(kinetic), atol=1e-4)
    shown = {axes.get_title("left"): np.ptp(axes.lines[0].get_ydata()) for axes in angles}
    assert {*shown} == {*lumo.Plugin().create().joint_names}
    assert min(shown.values()) > 0
    assert 0 < float(re.search("effect of gravity: (.*) N s", printed)[1]) < 1e-4  # gravity adds 5.5 N s


def test_fall_warns_of_a_change_of_energy_that_rounding_does_not_explain(run, tmp_path, monkeypatch):
    svg = f"--svg={tmp_path / 'a.svg'}"
    for options in ("--root -1,0,0,0,0,0 --seconds=0.02", "--push=Torso=60,0,0 --seconds=0.01",
                    "--friction=1e5 --seconds=1e-5 --step=1e-5"):
        assert "1e-5" not in run(fall, f"{options} {svg}")
    monkeypatch.setattr(fall, "monotonic", itertools.count().__next__)  # a second at each call
    printed = run(fall, f"--push=LWristYaw=30,0,0 --seconds=0.002 {svg}")
    assert "The total energy changes by more than 1e-5 of the energy exchanged" in printed
    assert len(printed.splitlines()) > 10  # progress within a step


def test_many_states_have_the_same_hash_when_a_worker_dies(run, tmp_path, monkeypatch):
    pytest.importorskip("distributed")
    hashes = [many_states.torques(chunk, count) for chunk, count in enumerate([5000, 5000, 5000, 4999])]

    def deadly(*chunk, torques=many_states.torques, mark=tmp_path / "died"):
        if not mark.exists():
            mark.touch()
            os.kill(os.getpid(), signal.SIGKILL)
        return torques(*chunk)

    monkeypatch.setattr(many_states, "torques", deadly)
    handler = signal.getsignal(signal.SIGINT)
    printed = run(many_states, "--states=19999 --workers=2")
    signal.signal(signal.SIGINT, handler)
    assert (tmp_path / "died").exists()
    assert "100% Completed" in printed
    assert printed.endswith(f"hash of all torques: {hashlib.sha256(''.join(hashes).encode()).hexdigest()[:16]}\n")


def test_options_set_the_whole_pose():
    robot, _ = make_robot()
    options = types.SimpleNamespace(root=np.array([1, 2, 3, 0.4, -0.5, 0.6]), joint=[("HeadYaw", [0.7])])
    root, c, s = support.set_pose(robot, options), np.cos(options.root[3:]), np.sin(options.root[3:])
    np.testing.assert_allclose(root[:, 0], [c[2] * c[1], s[2] * c[1], -s[1], 0], atol=1e-12)
    np.testing.assert_allclose(root[2], [-s[1], c[1] * s[0], c[1] * c[0], 3], atol=1e-12)
    np.testing.assert_allclose(robot.getRootPose(), root, atol=1e-6)
    assert robot.getJointAnglePos("HeadYaw") == np.float32(0.7)


def test_a_sweep_draws_the_torques_at_each_angle(tmp_path):
    robot, _ = make_robot()
    robot.computeFwdKinematics()
    base_pose, angles = robot.getPose("KneePitch").copy(), np.array([-0.4, 0.3])
    torques = gravity_torques.sweep(robot, "KneePitch", ["HeadYaw"], [angles])  # a joint with tiny torques
    for angle, swept in zip(angles, torques):
        robot.setJointAnglePos("HeadYaw", angle)
        np.testing.assert_array_equal(swept, gravity_torques.holding_torques(robot, "KneePitch", base_pose))
    gravity_torques.draw_curves(robot, "HeadYaw", angles, torques, tmp_path / "curves.svg")
    largest, swept = np.abs(torques).max(axis=0), robot.getJointAngleId("HeadYaw")
    curves = [list(line.get_ydata()) for line in gravity_torques.plt.gcf().axes[0].lines]
    assert curves == [list(torques[:, k]) for k in range(15) if k == swept or largest[k] > 0.02 * largest.max()]


def test_the_largest_torque_is_printed(run, tmp_path):
    printed = run(gravity_torques, f"--sweep=HipPitch=-2,0.5 --sweep=KneePitch=0,2.5 --svg={tmp_path / 'a.svg'}")
    # The torque is negative there.
    assert "KneePitch needs at most 56.1 N m, at HipPitch = 0.1 rad, KneePitch = 1.6 rad" in printed
