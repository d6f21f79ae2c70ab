"""The module as its users see it. What the plug-in computes is tested elsewhere; here, that it arrives."""

import copy
import gc
import inspect
import json
import os
import pathlib
import pickle
import re
import signal
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import lumo

HERE = pathlib.Path(__file__).parent
BUILD = pathlib.Path(lumo.__file__).parents[2]

POSE = np.array([[0, -1, 0, 1], [1, 0, 0, 2], [0, 0, 1, 3], [0, 0, 0, 1]])
LAST_ROW = np.array([[0], [0], [0], [1e-2]]) * [1, 0, 0, 0]

# The operations with arguments, by the kinds of their arguments.
ARGUMENTS = {name: kinds for kinds, names in {
    ("joint",): "getJointAngleName getJointAnglePos getJointAngleVel getJointAngleAcc getJointAngleTorque",
    ("body",): "getBodyName getPartialMass getMass getPoseInRoot getPose getComPosition computePartialComJacobian "
               "computePartialComPositionInRoot",
    ("name",): "getJointAngleId getBodyId",
    ("root pose",): "setRootPose", (6,): "setRootVelocity setRootAcceleration",
    (15,): "setJointAnglesPos setJointAnglesVel setJointAnglesAcc",
    ("joint", "number"): "setJointAnglePos setJointAngleVel setJointAngleAcc",
    ("body", 6, "pose"): "setExternalWrench", ("body", "number", 3, (3, 3)): "setBodyInertia",
    ("body", "pose"): "setPose", ("frame",): "getVolatilePose", ("frame", "pose"): "setVolatilePose",
}.items() for name in names.split()}

RIGHT = {"joint": 14, "body": 15, "frame": 0, "name": "HipPitch", "number": 0.5, "pose": POSE, "root pose": POSE,
         3: [1, 2, 3], 6: range(6), 15: range(15), (3, 3): np.eye(3)}


def not_arrays(*shape):
    right = np.zeros(shape)
    return {TypeError: [None, "abc", right.astype(complex), right.astype(bool), np.full(shape, None)],
            ValueError: [1.0, right[1:], right[..., None], right + 1e39, [[1], [1, 2]]]}


NOT_INDEXES = {IndexError: [-1, 16, 10**30], KeyError: ["Trso", "\ud800"], TypeError: [True, 1.0, None, b"Torso"]}
NOT_POSES = not_arrays(4, 4)
NOT_POSES[ValueError] += [POSE.T, POSE[:3], POSE + LAST_ROW]
WRONG = {
    "joint": {**NOT_INDEXES, IndexError: [-1, 15]}, "body": NOT_INDEXES,
    "frame": {IndexError: [-1, 1], TypeError: [True, 1.0, None, "Torso"]},
    "name": {KeyError: ["hippitch", "", "\0", "\ud800", "x" * 10**5], TypeError: [0, None, b"Torso"]},
    "number": {TypeError: [None, "1", 1j, True], ValueError: [1e39, -np.float64(1e300), [1.0]],
               OverflowError: [10**400]},
    3: not_arrays(3), 6: not_arrays(6), 15: not_arrays(15), (3, 3): not_arrays(3, 3), "pose": NOT_POSES,
    "root pose": {**NOT_POSES, ValueError: NOT_POSES[ValueError] + [
        POSE @ np.diag([1, 1, -1, 1]), POSE @ np.diag([1, 1.002, 1, 1]), POSE + 0.002 * np.eye(4, k=1)]},
}


@pytest.fixture
def robot():
    """In a state in which everything is different."""
    robot = lumo.Plugin().create()
    robot.setRootPose(POSE)
    robot.setRootVelocity([0.1, 0.2, 0.3, 0.4, 0.5, 0.6])
    robot.setJointAnglesPos(np.linspace(-0.7, 1, 15))
    robot.setJointAnglesVel(np.linspace(1, 2, 15))
    compute(robot)
    return robot


def compute(robot):
    robot.computeFwdKinematics()
    robot.computeGeneralizedMass()
    robot.computeInverseDynamics()


def views(robot):
    return {"root": robot.getRootPose(), "pose": robot.getPose("RWristYaw"),
            "in root": robot.getPoseInRoot("RWristYaw"), "volatile": robot.getVolatilePose(0),
            "com": robot.getComPosition(), "com in root": robot.getComPositionInRoot(),
            "H": robot.getGeneralizedMass(), "J": robot.getJacobianInRoot(), "torques": robot.getJointAnglesTorque(),
            "pos": robot.getJointAnglesPos(), "vel": robot.getJointAnglesVel(), "acc": robot.getJointAnglesAcc()}


def everything(robot):
    """All inputs and results, and what follows from the masses and the wrenches."""
    answers = [view.copy() for view in views(robot).values()]
    copy = robot.clone()
    compute(copy)
    answers += [copy.getJointAnglesTorque(), copy.getRootVelocity(), copy.getRootAcceleration(), robot.getMass()]
    for b in range(16):
        answers += [robot.getPose(b), robot.getMass(b), copy.getComPosition(b), copy.computePartialComJacobian(b)]
    return np.concatenate([np.ravel(answer) for answer in answers])


def raised_by(operation, *arguments):
    with pytest.raises(Exception) as error:
        operation(*arguments)
    return error.type


def run(code, *arguments):
    """In an interpreter of its own: (exit code, output, errors)."""
    result = subprocess.run([sys.executable, "-c", code, *arguments], capture_output=True, text=True, timeout=60)
    return result.returncode, result.stdout, result.stderr


def test_operations_are_those_of_the_interface_and_have_signatures():
    header = (HERE / "../../service/RigidBodySystem.hpp").read_text()
    interface = re.findall(r"\bvirtual [^~;{(]*\b(\w+)\(", header)
    assert len(interface) == 56
    assert {name for name in vars(lumo.RigidBodySystem) if name[0] != "_"} == {
        *interface, "evaluate", "body_names", "joint_names"}
    for name in interface:
        inspect.signature(getattr(lumo.RigidBodySystem, name))
    assert list(inspect.signature(lumo.Plugin().create().setJointAnglePos).parameters) == ["joint", "position"]


def test_static_types_are_right(tmp_path):
    environment = {**os.environ, "MYPYPATH": str(BUILD / "python"), "MYPY_CACHE_DIR": str(BUILD / "mypy")}
    program = tmp_path / "program.py"
    program.write_text("""if True:
        import lumo
        import numpy as np
        robot = lumo.Plugin().create()
        q = np.zeros((5, 15), np.float32)
        robot.setJointAnglePos("KneePitch", np.float32(1))
        results = robot.evaluate({"setJointAnglesPos": q, ("setRootPose",): [np.eye(4)] * 5},
                                 ["getMass", ("getPose", "Torso"), ("getMass", np.int64(3))], threads=2)
        results["getPose", "Torso"].sum()
        robot.setJointAnglePos("KneePitch", "1")  # type: ignore[arg-type]
        robot.setJointAnglePos("KneePitch")  # type: ignore[call-arg]
        robot.getPose(1.5)  # type: ignore[arg-type]
        lumo.RigidBodySystem()  # type: ignore
    """)
    # pybind11 gives its classes a metaclass.
    allowed = tmp_path / "allowed"
    allowed.write_text("lumo.Plugin\nlumo.RigidBodySystem\n")
    for tool in (["mypy.stubtest", "--allowlist", allowed, "lumo"], ["mypy", "--strict", program]):
        result = subprocess.run([sys.executable, "-m", *tool], capture_output=True, text=True, env=environment)
        assert result.returncode == 0, result.stdout + result.stderr


@pytest.mark.parametrize("options", [
    "", "--joint KneePitch=0.7 --velocity HipRoll=-2.5",
    "--joint RWristYaw=-1.25 --velocity LElbowYaw=1.1 --acceleration HipPitch=7 --wrench Torso=1,2,3,4,5,6"])
def test_results_have_the_bits_of_the_inspector(robot, options):
    shown = json.loads(subprocess.check_output(
        [BUILD / "bin/lumo-inspect", "--pose", "greeting", *options.split(), "--format", "json"]))
    joints, bodies = shown["joints"], shown["bodies"]
    robot.setJointAnglesPos([joint["position"] for joint in joints])
    robot.setJointAnglesVel([joint["velocity"] for joint in joints])
    robot.setJointAnglesAcc([joint["acceleration"] for joint in joints])
    pose = np.eye(4)
    pose[:3, :3], pose[:3, 3] = np.reshape(bodies[0]["rotation"], (3, 3)), bodies[0]["position"]
    robot.setRootPose(pose)
    robot.setRootVelocity(np.zeros(6))
    robot.setExternalWrench("Torso", [1, 2, 3, 4, 5, 6] if "wrench" in options else np.zeros(6))
    compute(robot)
    for result, expected in (
            (robot.getGeneralizedMass(), shown["generalized_mass"]),
            (robot.getComPositionInRoot(), shown["com_in_root"]),
            (robot.getJointAnglesTorque(), [joint["torque"] for joint in joints]),
            ([robot.getMass(b) for b in range(16)], [body["mass"] for body in bodies])):
        assert np.array_equal(np.float32(result), np.float32(expected))


def test_views_are_read_only_and_show_later_results(robot):
    before = {name: (view, view.copy()) for name, view in views(robot).items()}
    robot.setRootPose(np.eye(4))
    robot.setVolatilePose(0, POSE)
    robot.setJointAnglesPos(np.full(15, 0.5))
    robot.setJointAnglesVel(np.full(15, 0.6))
    robot.setJointAnglesAcc(np.full(15, 0.7))
    compute(robot)
    for name, (view, copy) in before.items():
        assert view.dtype == np.float32, name
        assert not np.array_equal(view, copy), name
        assert np.array_equal(view, views(robot)[name]), name
        with pytest.raises(ValueError):
            view[...] = 0
        with pytest.raises(ValueError):
            view.setflags(write=True)
    robot.setPose("RWristYaw", POSE)
    assert np.array_equal(before["pose"][0], POSE)


def test_what_is_returned_by_value_is_a_copy(robot):
    for get in (robot.getRootVelocity, robot.getParentsVector, lambda: robot.computePartialComJacobian(3)):
        expected = get().copy()
        get()[...] = 7
        assert np.array_equal(get(), expected)


def test_real_numbers_of_all_types_and_layouts_are_converted(robot):
    positions = np.arange(15) / 8
    for given in (positions, positions.astype(np.float32), positions.astype(">f8"), positions.astype(np.float16),
                  list(positions), np.tile(positions[:, None], 3)[:, 1], positions[::-1].copy()[::-1]):
        robot.setJointAnglesPos(np.zeros(15))
        robot.setJointAnglesPos(given)
        assert np.array_equal(robot.getJointAnglesPos(), positions)
    for given in (POSE, POSE.tolist(), np.asfortranarray(POSE), np.tile(POSE, (2, 2))[4:, 4:]):
        robot.setVolatilePose(0, np.eye(4))
        robot.setVolatilePose(0, given)
        assert np.array_equal(robot.getVolatilePose(0), POSE)
    for given in (2, np.int8(3), np.float64(4), np.array(5), 6.0, 10**20, -np.inf):
        robot.setJointAnglePos(3, given)
        assert robot.getJointAnglePos(np.uint8(3)) == np.float32(given)


@pytest.mark.parametrize("name", ARGUMENTS)
def test_wrong_arguments_raise_and_change_nothing(robot, name):
    operation, kinds = getattr(robot, name), ARGUMENTS[name]
    right = [RIGHT[kind] for kind in kinds]
    before = everything(robot)
    for position, kind in enumerate(kinds):
        for error, values in WRONG[kind].items():
            for wrong in values:
                raised = raised_by(operation, *right[:position], wrong, *right[position + 1:])
                assert raised is error, f"for {wrong!r} as argument {position}"
    for arguments, keywords in (((*right, 0, 0), {}), ((), {"body": 1})):
        with pytest.raises(TypeError, match=name):
            operation(*arguments, **keywords)
    assert np.array_equal(everything(robot), before)


def test_names_can_replace_indexes_and_errors_suggest_the_nearest_name(robot):
    for b, name in enumerate(robot.body_names):
        assert robot.getBodyId(name) == b
        assert np.array_equal(robot.getPose(name), robot.getPose(b))
    for k, name in enumerate(robot.joint_names):
        assert robot.getJointAnglePos(name) == robot.getJointAnglesPos()[k]
    for name, nearest in (("kneepitch", "KneePitch"), ("LSholderRoll", "LShoulderRoll")):
        with pytest.raises(KeyError, match=f'"{nearest}"'):
            robot.setJointAnglePos(name, 0)
    with pytest.raises(KeyError, match='"xyz"\'$'):  # Nothing is similar.
        robot.setJointAnglePos("xyz", 0)


def test_operations_raise_without_a_valid_object():
    for name in ("getMass", "clone", "__reduce__", "evaluate"):
        assert raised_by(getattr(lumo.RigidBodySystem, name), lumo.Plugin()) is TypeError
    base = lumo.Plugin.__base__
    for call, *arguments in ((lumo.RigidBodySystem,), (base,), (lumo.Plugin.create, None), (lumo.Plugin.__reduce__, 3)):
        assert raised_by(call, *arguments) is TypeError


def test_objects_can_be_copied_and_plugins_pickled(robot):
    for other in (copy.copy(robot), copy.deepcopy([robot])[0]):
        assert np.array_equal(everything(other), everything(robot))
        other.setJointAnglePos(3, 9)
        assert robot.getJointAnglePos(3) != 9
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        for plugin in (lumo.Plugin(), lumo.Plugin(os.path.relpath(BUILD / "lib/lumo/norvaX3.so"))):
            assert pickle.loads(pickle.dumps(plugin, protocol)).create().getMass() == robot.getMass()
        with pytest.raises(TypeError, match="pickle"):
            pickle.dumps(robot, protocol)


def test_an_object_says_what_it_is(robot):
    robot.setJointAnglesPos([0] * 9 + [0.5] + [0] * 5)
    assert repr(robot) == "<lumo.RigidBodySystem norvaX3: root at (1, 2, 3) m, KneePitch 0.5 rad>"


def test_files_that_are_no_plugin_raise(tmp_path):
    for file, error in (("none", RuntimeError), (f"{BUILD}/lib/liboxmath.so", RuntimeError), (3, TypeError)):
        assert raised_by(lumo.Plugin, file) is error, file
    plugin = (BUILD / "lib/lumo/norvaX3.so").read_bytes()
    for size in (64, len(plugin) // 2, len(plugin) - 1):
        (tmp_path / "cut.so").write_bytes(plugin[:size])
        assert "RuntimeError" in run("import sys, lumo; lumo.Plugin(sys.argv[1])", tmp_path / "cut.so")[2]
    empty = 'extern "C" void* create() { return nullptr; } extern "C" void destroy(void*) {}'
    compiler = ["c++", "-shared", "-fPIC", "-o", tmp_path / "null.so", "-xc++", "-"]
    subprocess.run(compiler, input=empty.encode(), check=True)
    assert raised_by(lumo.Plugin(tmp_path / "null.so").create) is RuntimeError


def test_views_outlive_everything_else(robot):
    expected = [view.copy() for view in views(robot).values()]
    kept = list(views(robot.clone()).values())
    del robot
    gc.collect()
    others = [lumo.Plugin().create() for _ in range(50)]
    for other in others:
        compute(other)
    for view, copy in zip(kept, expected):
        assert np.array_equal(view, copy)


def test_sub_interpreters_are_refused():
    code = """if True:
        import _xxsubinterpreters as interpreters
        interpreters.run_string(interpreters.create(), "import lumo")
    """
    assert "ImportError" in run(code)[2]


def test_a_getter_does_not_disturb_a_view_that_another_thread_reads(robot):
    view, expected, wrong = robot.getPose("RWristYaw"), robot.getPose("RWristYaw").copy(), []
    end = time.monotonic() + 0.3

    def read():
        seen = np.empty((1000, 4, 4), np.float32)
        while time.monotonic() < end:
            seen[:] = view
            wrong.append((seen != expected).any())

    thread = threading.Thread(target=read)
    thread.start()
    while time.monotonic() < end:
        robot.getPose("RWristYaw")
    thread.join()
    assert not any(wrong)


def test_only_evaluate_releases_the_lock_of_python(robot):
    count, end = 0, threading.Event()

    def other():  # runs only while Python's lock is free
        nonlocal count
        while not end.is_set():
            time.sleep(0)
            count += 1

    inputs, thread, interval = states(20000), threading.Thread(target=other), sys.getswitchinterval()
    sys.setswitchinterval(60)  # Nobody asks the thread that has the lock to release it.
    thread.start()
    time.sleep(0.01)
    counts = [count]
    for _ in range(3000):
        robot.setJointAnglePos(3, 0.5)
        compute(robot)
        robot.getPose(3)
    counts.append(count)
    robot.evaluate(inputs, ["getGeneralizedMass"])
    counts.append(count)
    end.set()
    sys.setswitchinterval(interval)
    thread.join()
    assert counts[0] == counts[1] < counts[2]


def states(count):
    """Every input, for a number of states."""
    def draw(*shape):
        return np.random.default_rng(7).uniform(-1, 1, (count, *shape)).astype(np.float32)

    poses = np.tile(np.eye(4, dtype=np.float32), (count, 1, 1))
    poses[:, :3, :3] = np.linalg.qr(draw(3, 3))[0]
    poses[:, :3, 0] *= np.linalg.det(poses[:, :3, :3])[:, None]
    poses[:, :3, 3] = draw(3)
    return {"setRootPose": poses, "setRootVelocity": draw(6), "setRootAcceleration": draw(6),
            "setJointAnglesPos": draw(15), "setJointAnglesVel": 2 * draw(15), "setJointAnglesAcc": 3 * draw(15),
            ("setJointAnglePos", "KneePitch"): draw(), ("setJointAngleVel", 3): draw(), ("setJointAngleAcc", 4): draw(),
            ("setExternalWrench", "RWristYaw"): draw(6), ("setExternalWrench", 3): -draw(6),
            ("setVolatilePose", 0): poses[::-1]}


# Every getter and both partial operations, for the root and for another body where that matters.
OUTPUTS = [name for name in vars(lumo.RigidBodySystem) if re.match("get|computePartial", name)
           and name not in ARGUMENTS and "Name" not in name] + ["getMass", "getComPosition", ("getVolatilePose", 0)]
OUTPUTS += [(name, index) for name, kinds in ARGUMENTS.items() if kinds in (("body",), ("joint",))
            and "Name" not in name for index in (0, 7)]


def of_key(robot, key):
    name, *arguments = (key,) if isinstance(key, str) else key
    return lambda *values: getattr(robot, name)(*arguments, *values)


@pytest.mark.parametrize("threads", [1, 3, None])
def test_evaluate_gives_the_bits_of_single_calls(robot, threads):
    inputs, before, single = states(150), everything(robot), robot.clone()
    together = robot.evaluate(inputs, OUTPUTS, threads)
    alone = {key: robot.evaluate(inputs, iter([key]), threads=threads)[key] for key in OUTPUTS}
    assert list(together) == OUTPUTS
    assert np.array_equal(everything(robot), before)
    for i in range(150):
        for key, values in inputs.items():
            of_key(single, key)(values[i])
        compute(single)
        for key in OUTPUTS:
            expected = np.asarray(of_key(single, key)())
            assert np.array_equal(together[key][i], expected), (key, i)
            if key not in ("getRootPose", ("getPose", 0), ("getComPosition", 0)):  # A computation rounds these again.
                assert np.array_equal(alone[key][i], expected), (key, i)


def test_evaluate_sets_poses_after_the_computations_and_keeps_other_inputs(robot):
    poses = states(3)["setRootPose"]
    results = robot.evaluate({("setPose", 5): poses, "setJointAnglesPos": np.zeros((3, 15))},
                             [("getPose", 5), ("getPose", 6), "getJointAnglesVel"])
    assert np.array_equal(results["getPose", 5], poses)
    assert not np.array_equal(results["getPose", 6][0], np.eye(4))
    assert np.array_equal(results["getJointAnglesVel"], np.tile(robot.getJointAnglesVel(), (3, 1)))
    root = robot.evaluate({"setRootPose": poses[:1]}, ["getRootPose"])["getRootPose"][0]
    robot.setRootPose(poses[0])
    assert np.array_equal(root, robot.getRootPose())  # No computation rounded it again.


def test_evaluate_takes_arrays_of_all_types_and_layouts(robot):
    q = np.round(states(100)["setJointAnglesPos"] * 64)
    wide = np.zeros((200, 40), np.float32)
    wide[::2, 3:18] = q
    torques = [robot.evaluate({"setJointAnglesPos": given}, ["getJointAnglesTorque"], 2)["getJointAnglesTorque"]
               for given in (q, wide[::2, 3:18], np.asfortranarray(q), q.astype(float), q.astype(np.int8), q.tolist(),
                             q.astype(">f4"), q[::-1].copy()[::-1])]
    assert all(np.array_equal(result, torques[0]) for result in torques)
    assert robot.evaluate({"setJointAnglesPos": q[:0]}, ["getRootPose"])["getRootPose"].shape == (0, 4, 4)


Q = np.zeros((70, 15))


@pytest.mark.parametrize("inputs, outputs, threads, error, word", [
    ({"setJointAnglesPos": Q, "setRootVelocity": Q[1:, :6]}, [], 1, ValueError, "AnglesPos'.*'setRootVelocity'"),
    ({}, ["getMass"], 1, ValueError, "input"),
    ({"setJointAnglesPos": Q[0]}, [], 1, ValueError, "'setJointAnglesPos'"),
    ({"setRootPose": [*[np.eye(4)] * 69, 2 * np.eye(4)]}, [], 2, ValueError, "'setRootPose'.* 69"),
    ({"setBodyInertia": Q}, [], 1, KeyError, "setBodyInertia"),
    ({"setJointAnglePos": Q[0]}, [], 1, TypeError, "setJointAnglePos"),
    ({("setJointAnglePos", 15): Q[0]}, [], 1, IndexError, "14"),
    ({("setJointAnglePos", "Knee"): Q[0]}, [], 1, KeyError, "KneePitch"),
    ({"setJointAnglesPos": Q}, ["getPos"], 1, KeyError, "getPos"),
    ({"setJointAnglesPos": Q}, "getMass", 1, TypeError, "outputs"),
    ({"setJointAnglesPos": Q}, [], 0, ValueError, "1"),
    ({"setJointAnglesPos": Q}, [], -1, ValueError, "1"),
])
def test_wrong_calls_of_evaluate_raise(robot, inputs, outputs, threads, error, word):
    with pytest.raises(error, match=word):
        robot.evaluate(inputs, outputs, threads)


def test_evaluate_survives_inputs_that_change_the_dict(robot):
    class Index:
        def __index__(self):
            inputs.clear()
            return 3
    inputs = {("setJointAnglePos", Index()): np.zeros(2), "setJointAnglesVel": np.zeros((2, 15))}
    assert len(robot.evaluate(inputs, ["getMass"])["getMass"]) == 2


def test_evaluate_can_be_interrupted(robot):
    many = {"setJointAnglesPos": np.broadcast_to(np.float32(0.1), (10**7, 15))}
    timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    start = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        robot.evaluate(many, [("getJointAngleTorque", 0)])
    assert time.monotonic() - start < 0.3 + 0.5  # 0.1 s, and more on a machine that is busy


def test_masses_change_only_while_no_evaluation_runs():
    code = """if True:
        import threading, lumo, numpy as np
        robot, results = lumo.Plugin().create(), []
        inputs = {"setJointAnglesPos": np.zeros((300000, 15), np.float32)}
        thread = threading.Thread(target=lambda: results.append(robot.evaluate(inputs, ["getMass", ("getMass", 3)])))
        thread.start()
        while thread.is_alive():
            lumo.Plugin().create().setBodyInertia(3, np.random.rand(), np.zeros(3), np.eye(3))
        print(all((values == values[0]).all() for values in results[0].values()))
    """
    assert run(code) == (0, "True\n", "")


def test_the_first_example_of_the_document_prints_what_it_says():
    document = (HERE / "../../docs/python.md").read_text()
    code, output = re.search(r"```python\n(.*?)```.*?```\n(.*?)```", document, re.DOTALL).groups()
    assert run(code) == (0, output, "")
